// The events that tell what became of a fetched document.

#include "program/phone/document_events.h"

#include <string>

#include "headsetmgmt/utilities.h"

namespace headsetmgmt::program {

namespace {

using Accessories = std::vector<AccessoryCache>;

/// Those that the library looks up as `model`.
std::vector<const AccessoryCache*> of_model(const std::string& model,
                                            const Accessories& accessories) {
    std::vector<const AccessoryCache*> found;
    for (const AccessoryCache& facts : accessories) {
        if (get_headset_model(facts.model, facts.serial_number) == model) {
            found.push_back(&facts);
        }
    }
    return found;
}

/// Adds whose it is: the model, and the id where no other accessory has that model.
void tell_accessory(Event& event, const std::string& model, const Accessories& accessories) {
    if (model.empty()) {
        return;  // not told
    }
    event["model"] = model;
    const auto found = of_model(model, accessories);
    if (found.size() == 1) {
        event["id"] = found.front()->device_id;
    }
}

/// The other model that every accessory of `model` reports; empty when there is none.
std::string reported_model(const std::string& model, const Accessories& accessories) {
    std::string reported;
    for (const AccessoryCache* facts : of_model(model, accessories)) {
        if (facts->model == model) {
            return {};
        }
        reported = facts->model;
    }
    return reported;
}

void tell_failure(Event& event, const DocumentFailure& failure, const Accessories& accessories) {
    Event told = Event::object();
    tell_accessory(told, failure.model, accessories);
    std::string sentence = failure.model;
    const std::string reported = reported_model(failure.model, accessories);
    if (!reported.empty()) {
        told["reportedModel"] = reported;
        sentence +=
            " (reported as " + reported + ": the eighth character of its serial number is a 4)";
    }
    told["reason"] = failure.reason;
    sentence += (sentence.empty() ? "" : ": ") + failure.reason;
    event["reasons"].push_back(sentence);
    event["failures"].push_back(told);
}

void tell_unsent(Event& event, const UnsentSettings& unsent, const Accessories& accessories) {
    Event told = Event::object();
    tell_accessory(told, unsent.model, accessories);
    told["settings"] = unsent.count;
    told["reason"] = unsent.reason;
    event["notSent"].push_back(told);
}

void tell_passed_over(Event& event, const PassedOverSetting& setting,
                      const Accessories& accessories) {
    Event told = {{"list", setting.list}};
    if (!setting.name.empty()) {
        told["name"] = setting.name;
    }
    told["reason"] = setting.reason;
    told["accessories"] = Event::array();
    for (const std::string& model : setting.models) {
        Event accessory = Event::object();
        tell_accessory(accessory, model, accessories);
        told["accessories"].push_back(accessory);
    }
    event["passedOver"].push_back(told);
}

}  // namespace

std::vector<Event> firmware_events(const AnswerJudgement& judged, const Accessories& accessories) {
    std::vector<Event> events;
    for (const FirmwareDecision& firmware : judged.firmware_decisions()) {
        Event told = {{"event", "firmware"}};
        tell_accessory(told, firmware.model, accessories);
        if (!firmware.dongle_model.empty()) {
            told["dongleModel"] = firmware.dongle_model;
        }
        told["decision"] = firmware.decision;
        if (firmware.reported) {
            told["reported"] = *firmware.reported;
        }
        if (firmware.wanted) {
            told["wanted"] = *firmware.wanted;
        }
        events.push_back(told);
    }
    return events;
}

Event document_event(const AnswerJudgement& judged, const Accessories& accessories) {
    Event told = {
        {"event", "document"}, {"taken", judged.taken()}, {"failed", judged.failures().size()}};
    if (judged.was_dropped()) {
        told["dropped"] = true;
    }
    for (const DocumentFailure& failure : judged.failures()) {
        tell_failure(told, failure, accessories);
    }
    for (const UnsentSettings& unsent : judged.unsent()) {
        tell_unsent(told, unsent, accessories);
    }
    for (const PassedOverSetting& setting : judged.passed_over()) {
        tell_passed_over(told, setting, accessories);
    }
    return told;
}

}  // namespace headsetmgmt::program
