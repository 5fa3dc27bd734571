// SPDX-License-Identifier: Apache-2.0
// The result of a document that was handed to the library, for each accessory.

#include "program/phone/hand_over.h"

#include <cstddef>
#include <map>
#include <utility>

#include "headsetmgmt/utilities.h"

namespace headsetmgmt::program {

void HandOver::on_line(const LibraryLine& line) {
    using Kind = LibraryLine::Kind;
    switch (line.kind) {
    case Kind::document_dropped:
        dropped = true;
        break;
    case Kind::accessory_model:
        current.model = line.text;
        break;
    case Kind::document_taken:
        end_turn(true);
        break;
    case Kind::document_failed:
        end_turn(false);
        break;
    default:
        break;
    }
}

void HandOver::end_turn(bool is_taken) {
    current.is_taken = is_taken;
    ended.push_back(current);
    current = {};
}

/// Which trace is whose, by the accessory's place in `waiting`; null for those without a turn.
std::vector<const HandOver::Trace*>
HandOver::assign(const std::vector<AccessoryCache>& waiting,
                 const std::vector<AccessoryOutcome>& outcomes) const {
    using Key = std::pair<std::string, bool>;
    std::vector<const Trace*> result(waiting.size());
    std::vector<const Trace*> open;
    for (const Trace& trace : ended) {
        open.push_back(&trace);
    }
    // An open trace is that of the earliest accessory without one that has the same key.
    const auto assign_by = [&](const auto& key_of_accessory, const auto& key_of_trace) {
        std::map<Key, std::vector<std::size_t>> places;  // the earliest last
        for (std::size_t i = waiting.size(); i-- > 0;) {
            if (result[i] == nullptr) {
                places[key_of_accessory(i)].push_back(i);
            }
        }
        std::vector<const Trace*> left;
        for (const Trace* trace : open) {
            const auto found = places.find(key_of_trace(*trace));
            if (found == places.end() || found->second.empty()) {
                left.push_back(trace);
            } else {
                result[found->second.back()] = trace;
                found->second.pop_back();
            }
        }
        open = std::move(left);
    };
    const auto model = [&](std::size_t i) {
        return get_headset_model(waiting[i].model, waiting[i].serial_number);
    };
    assign_by([&](std::size_t i) { return Key(waiting[i].device_id, false); },
              [](const Trace& trace) { return Key(trace.device_id, false); });
    assign_by([&](std::size_t i) { return Key(model(i), outcomes[i].failure.empty()); },
              [](const Trace& trace) { return Key(trace.model, trace.is_taken); });
    assign_by([&](std::size_t i) { return Key(model(i), false); },
              [](const Trace& trace) { return Key(trace.model, false); });
    assign_by([](std::size_t /*i*/) { return Key(); },
              [](const Trace& /*trace*/) { return Key(); });
    return result;
}

std::vector<Turn> HandOver::turns(const std::vector<AccessoryCache>& waiting,
                                  std::vector<AccessoryOutcome>& outcomes) const {
    const std::vector<const Trace*> traces = assign(waiting, outcomes);
    std::vector<Turn> turns;
    std::vector<AccessoryOutcome> theirs;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        if (traces[i] != nullptr) {
            turns.push_back({waiting[i], traces[i]->is_taken, traces[i]->lacks_memory});
            theirs.push_back(std::move(outcomes[i]));
        }
    }
    outcomes = std::move(theirs);
    return turns;
}

}  // namespace headsetmgmt::program
