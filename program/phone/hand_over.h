// SPDX-License-Identifier: Apache-2.0
// The result of a document that was handed to the library, for each accessory.

#pragma once

#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

#include "program/document/outcome.h"
#include "program/phone/library_lines.h"

namespace headsetmgmt::program {

/// The result for one accessory.
struct Turn {
    AccessoryCache facts;
    bool is_taken = false;      ///< it could use the document
    bool lacks_memory = false;  ///< memory ran out while the library read the document
};

/// Follows the library while it hands a document to one accessory after the other: what it logs and
/// which host functions it calls on the thread that called `httpResponse`. One thread.
class HandOver {
public:
    void on_line(const LibraryLine& line);

    /// A host function was called for the accessory.
    void on_host_call(const std::string& device_id) { current.device_id = device_id; }

    /// An allocation has failed since the line before: the library's parser reports it as a fault
    /// of the text.
    void on_lack_of_memory() { current.lacks_memory = true; }

    /// Nobody was waiting for the document.
    bool was_dropped() const { return dropped; }

    /// Whether an accessory had its turn.
    bool has_turns() const { return !ended.empty(); }

    /// The accessories that had their turn, in the order of `waiting`: those that were attached and
    /// had no document yet, the earliest first. `outcomes` are what the document does to them, in
    /// the same order; those of accessories without a turn are removed.
    ///
    /// The library names none of them. It hands the document to all that were attached before, in
    /// any order. Where no host call, model or outcome distinguishes them, the earliest ones had
    /// their turn.
    std::vector<Turn> turns(const std::vector<AccessoryCache>& waiting,
                            std::vector<AccessoryOutcome>& outcomes) const;

private:
    /// What is known of an accessory in its turn.
    struct Trace {
        std::string device_id;  // empty without a host call
        std::string model;      // as the library looks it up; empty when it did not get so far
        bool is_taken = false;
        bool lacks_memory = false;
    };

    void end_turn(bool is_taken);
    std::vector<const Trace*> assign(const std::vector<AccessoryCache>& waiting,
                                     const std::vector<AccessoryOutcome>& outcomes) const;

    Trace current;
    std::vector<Trace> ended;
    bool dropped = false;
};

}  // namespace headsetmgmt::program
