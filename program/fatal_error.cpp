// SPDX-License-Identifier: Apache-2.0
// How the program ends when it cannot go on.

#include "program/fatal_error.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>
#include <unistd.h>

#include "program/exit_codes.h"
#include "program/output.h"

namespace headsetmgmt::program {

namespace {

constexpr char lack_of_memory[] = "memory ran out";

/// Takes no memory.
[[noreturn]] void end_with(const char* message) {
    static std::atomic<bool> is_ending{false};
    while (is_ending.exchange(true)) {
        pause();  // another thread ends the program
    }
    complain(message);
    std::_Exit(exit_failed);
}

[[noreturn]] void end_by_exception() {
    try {
        if (const std::exception_ptr thrown = std::current_exception()) {
            std::rethrow_exception(thrown);
        }
    } catch (const std::bad_alloc& /*error*/) {
        end_with(lack_of_memory);
    } catch (const std::system_error& error) {
        const bool is_lack = error.code() == std::errc::resource_unavailable_try_again;
        end_with(is_lack ? "the system lacks memory or threads" : error.what());
    } catch (const std::exception& error) {
        end_with(error.what());
    } catch (...) {
        end_with("an unknown exception");
    }
    std::abort();  // no exception, so a mistake of this program
}

}  // namespace

void end_on_uncaught_exceptions() {
    std::set_terminate(end_by_exception);
}

void end_on_lack_of_memory() {
    std::set_new_handler([] { end_with(lack_of_memory); });
}

}  // namespace headsetmgmt::program
