// SPDX-License-Identifier: Apache-2.0
// The result of a document that was handed to the library, for each accessory.

#include "program/phone/hand_over.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
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
HandOver::assign(const std::vector<AccessoryCache>& waiting) const {
    std::vector<const Trace*> result(waiting.size());
    std::unordered_map<std::string, std::size_t> by_id;
    std::unordered_map<std::string, std::vector<std::size_t>> by_model;  // the earliest last
    for (std::size_t i = waiting.size(); i-- > 0;) {
        by_id[waiting[i].device_id] = i;
        by_model[get_headset_model(waiting[i].model, waiting[i].serial_number)].push_back(i);
    }
    std::vector<const Trace*> without_id;
    for (const Trace& trace : ended) {
        const auto found = by_id.find(trace.device_id);
        if (found != by_id.end()) {
            result[found->second] = &trace;
        } else {
            without_id.push_back(&trace);
        }
    }
    std::vector<const Trace*> without_model;
    for (const Trace* trace : without_id) {
        std::vector<std::size_t>& of_model = by_model[trace->model];
        while (!of_model.empty() && result[of_model.back()] != nullptr) {
            of_model.pop_back();
        }
        if (!of_model.empty()) {
            result[of_model.back()] = trace;
        } else {
            without_model.push_back(trace);
        }
    }
    auto place = result.begin();
    for (const Trace* trace : without_model) {
        place = std::find(place, result.end(), nullptr);
        if (place != result.end()) {
            *place = trace;
        }
    }
    return result;
}

std::vector<Turn> HandOver::take_turns(std::vector<AccessoryCache>& waiting) const {
    const std::vector<const Trace*> traces = assign(waiting);
    std::vector<Turn> turns;
    std::vector<AccessoryCache> left;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        if (traces[i] != nullptr) {
            turns.push_back({waiting[i], traces[i]->is_taken, traces[i]->lacks_memory});
        } else {
            left.push_back(waiting[i]);
        }
    }
    waiting = std::move(left);
    return turns;
}

}  // namespace headsetmgmt::program
