// The events that tell what became of a fetched document.

#pragma once

#include <vector>

#include "headsetmgmt/phone/host_types.h"

#include "program/output.h"
#include "program/phone/answer_judgement.h"

namespace headsetmgmt::program {

/// The `firmware` events of a document, in the order of the decisions. `accessories` are those of
/// the phone: what is told of a model that exactly one of them has carries its id too.
std::vector<Event> firmware_events(const AnswerJudgement& judged,
                                   const std::vector<AccessoryCache>& accessories);

/// The `document` event. Each failure stands in it twice: in "reasons" as a sentence, in "failures"
/// by its members.
Event document_event(const AnswerJudgement& judged, const std::vector<AccessoryCache>& accessories);

}  // namespace headsetmgmt::program
