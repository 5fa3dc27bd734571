// SPDX-License-Identifier: Apache-2.0
// Stand-alone readers of a configuration document from a local file. No flow of the library calls
// them.

#pragma once

#include <string>

namespace headsetmgmt::dispatcher {

/// Reads sample documents of a source tree.
class FileDispatcherImpl {
public:
    /// Sends nothing; 0.
    int push(const std::string& url, const std::string& body) const;

    /// Reads "../../../../sample-config/<name>" into `document` and reports on standard output.
    /// Always 0; `document` is unchanged when the file cannot be read.
    int get(const std::string& name, std::string& document) const;
};

/// Reads the document that the phone keeps in its memory file system.
class TftpDispatcherImpl {
public:
    /// Sends nothing; 0.
    int push(const std::string& url, const std::string& body) const;

    /// Reads "/tmp/ram/defaultheadsetconfig.json" into `document`, whatever `name` is: 0, or 1 when
    /// the file cannot be read (`document` is then unchanged).
    int get(const std::string& name, std::string& document) const;
};

}  // namespace headsetmgmt::dispatcher
