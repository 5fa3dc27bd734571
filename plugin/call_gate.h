// SPDX-License-Identifier: Apache-2.0
// The gate through which flat calls enter the library. A stop closes it.

#pragma once

#include <atomic>
#include <shared_mutex>

namespace headsetmgmt::plugin {

/// While it is closed, calls are refused at once; closing waits until the last call inside has
/// left.
///
/// There is only one object: being inside is a property of the thread. Any thread. Initialised
/// before any code runs and never destroyed, so that it can be used even while the process exits.
class CallGate {
public:
    enum class State { closed, open, open_and_started };

    /// One call's passage through the gate, for the length of the call.
    class Passage {
    public:
        explicit Passage(CallGate& gate);
        ~Passage();

        Passage(const Passage&) = delete;
        Passage& operator=(const Passage&) = delete;

        /// Whether the call was admitted.
        explicit operator bool() const { return let_in; }

    private:
        CallGate& passed;
        bool let_in = false;
    };

    /// Whether the calling thread is inside.
    static bool is_inside();

    /// Whether calls find a started library behind it.
    bool is_started() const { return !closed_for_good && state == State::open_and_started; }

    /// Turns calls away from now on, and waits until those inside have left. Not from inside.
    void close_and_wait();

    /// Turns calls away forever; those inside stay.
    void close_for_good() { closed_for_good = true; }
    bool is_closed_for_good() const { return closed_for_good; }

    /// Lets calls in again.
    void reopen(bool started);

private:
    bool turns_away() const { return closed_for_good || state == State::closed; }

    std::atomic<State> state{State::open};
    std::atomic<bool> closed_for_good{false};
    std::shared_mutex inside;  // shared by the outermost call of each thread that is inside
};

}  // namespace headsetmgmt::plugin
