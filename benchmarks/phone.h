// SPDX-License-Identifier: Apache-2.0
// The phone that the benchmarks play: the library, started, and the host around it.
//
// It is linked to programs with a worker that rests until it is woken (resting_worker.h).

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt::benchmarks {

/// The library, started, with its host (host.h) around it. One at a time, used from one thread.
class Phone {
public:
    /// Creates and starts the library, with the log callback that counts, and sets its URLs.
    Phone();

    /// Stops the library.
    ~Phone();

    Phone(const Phone&) = delete;
    Phone& operator=(const Phone&) = delete;

    /// Attaches the accessory and runs the worker, which requests the document; the answer is
    /// awaited then.
    void attach_and_fetch(const std::shared_ptr<AccessoryCache>& accessory);

    /// Keeps the texts of the lines of `body` instead of counting them.
    std::vector<std::string> lines_of(const std::function<void()>& body);
};

/// A headset of the model "Varos K20" with a dock, as a host describes it.
std::shared_ptr<AccessoryCache> headset(const std::string& device_id);

}  // namespace headsetmgmt::benchmarks
