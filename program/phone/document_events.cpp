// The events that tell what became of a fetched document.

#include "program/phone/document_events.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>

#include "headsetmgmt/utilities.h"

namespace headsetmgmt::program {

namespace {

using Accessories = std::vector<AccessoryCache>;

/// The accessories that the library looks up as one model.
struct OfModel {
    std::size_t count = 0;
    std::string id;        // of the first
    std::string reported;  // the other model that every one of them reports; empty without one
};

/// Which accessories the library looks up as which model. Made once: a document may be told of
/// thousands of times, to hundreds of accessories.
class Models {
public:
    explicit Models(const Accessories& accessories) {
        for (const AccessoryCache& facts : accessories) {
            const std::string model = get_headset_model(facts.model, facts.serial_number);
            OfModel& found = models[model];
            const bool is_reported_so = facts.model == model;
            if (found.count == 0) {
                found.id = facts.device_id;
                found.reported = is_reported_so ? "" : facts.model;
            } else if (is_reported_so) {
                found.reported.clear();
            }
            ++found.count;
        }
    }

    /// Adds whose it is: the model, and the id where no other accessory has that model.
    void tell(Event& event, const std::string& model) const {
        if (model.empty()) {
            return;  // not told
        }
        event["model"] = model;
        const auto found = models.find(model);
        if (found != models.end() && found->second.count == 1) {
            event["id"] = found->second.id;
        }
    }

    /// The other model that every accessory of `model` reports; empty when there is none.
    std::string reported_for(const std::string& model) const {
        const auto found = models.find(model);
        return found != models.end() ? found->second.reported : "";
    }

private:
    std::unordered_map<std::string, OfModel> models;
};

void tell_failure(Event& event, const DocumentFailure& failure, const Models& models) {
    Event told = Event::object();
    models.tell(told, failure.model);
    std::string sentence = failure.model;
    const std::string reported = models.reported_for(failure.model);
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

void tell_unsent(Event& event, const UnsentSettings& unsent, const Models& models) {
    Event told = Event::object();
    models.tell(told, unsent.model);
    told["settings"] = unsent.count;
    told["reason"] = unsent.reason;
    event["notSent"].push_back(told);
}

void tell_passed_over(Event& event, const PassedOverSetting& setting, const Models& models) {
    Event told = {{"list", setting.list}};
    if (!setting.name.empty()) {
        told["name"] = setting.name;
    }
    told["reason"] = setting.reason;
    Event whose = Event::array();
    for (const std::string& model : setting.models) {
        Event accessory = Event::object();
        models.tell(accessory, model);
        whose.push_back(std::move(accessory));
    }
    told["accessories"] = std::move(whose);
    told["lackedBy"] = setting.accessories;
    event["passedOver"].push_back(std::move(told));
}

}  // namespace

std::vector<Event> firmware_events(const AnswerJudgement& judged, const Accessories& accessories) {
    const Models models(accessories);
    std::vector<Event> events;
    for (const FirmwareDecision& firmware : judged.firmware_decisions()) {
        Event told = {{"event", "firmware"}};
        models.tell(told, firmware.model);
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
    const Models models(accessories);
    Event told = {
        {"event", "document"}, {"taken", judged.taken()}, {"failed", judged.failures().size()}};
    if (judged.was_dropped()) {
        told["dropped"] = true;
    }
    for (const DocumentFailure& failure : judged.failures()) {
        tell_failure(told, failure, models);
    }
    for (const UnsentSettings& unsent : judged.unsent()) {
        tell_unsent(told, unsent, models);
    }
    if (judged.passed_over_count() != 0) {
        told["settingsPassedOver"] = judged.passed_over_count();
    }
    for (const PassedOverSetting& setting : judged.passed_over()) {
        tell_passed_over(told, setting, models);
    }
    return told;
}

}  // namespace headsetmgmt::program
