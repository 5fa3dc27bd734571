// SPDX-License-Identifier: Apache-2.0
// The log lines that the phone reads: what they say, no host function does.

#pragma once

#include <string>

namespace headsetmgmt::program {

/// What one log line of the library says.
struct LibraryLine {
    enum class Kind {
        other,
        fetch_queued,      ///< a fetch was queued for the accessory that is being attached
        document_dropped,  ///< nobody waits for the document
        accessory_model,   ///< `text`: model of the accessory that the document is handed to next
        document_taken,    ///< that accessory can use it
        document_failed,   ///< that accessory cannot use it
        report_begun,      ///< the report of an accessory is being built
        report_without_serial_number,  ///< its accessory has no serial number
        report_failed,                 ///< it was not built
    };

    Kind kind = Kind::other;
    std::string text;
};

LibraryLine read_library_line(const std::string& line);

}  // namespace headsetmgmt::program
