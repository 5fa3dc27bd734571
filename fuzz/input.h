// SPDX-License-Identifier: Apache-2.0
// The bytes of one fuzz input, read as numbers, choices and texts.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace headsetmgmt::fuzz {

/// Reads from front to back. Past the end every number is 0 and every text empty, so that every
/// reader takes its first choice and ends.
class Input {
public:
    /// `bytes` are borrowed for the reader's life.
    Input(const std::uint8_t* bytes, std::size_t size)
        : at(reinterpret_cast<const char*>(bytes)), left(size) {}

    bool is_used_up() const { return left == 0; }

    /// The next byte, 0 to 255.
    unsigned int byte() {
        const std::string next = take(1);
        return next.empty() ? 0 : static_cast<unsigned char>(next.front());
    }

    /// A number from 0 to `limit - 1`, from one byte.
    unsigned int below(unsigned int limit) { return byte() % limit; }

    /// A text of any bytes, its length in the byte before it.
    std::string text() {
        const unsigned int length = byte();
        return take(length);
    }

    /// The text up to the next line feed, which is passed over, or to the end.
    std::string line() {
        const char* const end = std::find(at, at + left, '\n');
        std::string result = take(static_cast<std::size_t>(end - at));
        take(1);
        return result;
    }

    /// All that is left.
    std::string rest() { return take(left); }

private:
    std::string take(std::size_t wanted) {
        const std::size_t length = std::min(wanted, left);
        std::string taken(at, length);
        at += length;
        left -= length;
        return taken;
    }

    const char* at;
    std::size_t left;
};

}  // namespace headsetmgmt::fuzz
