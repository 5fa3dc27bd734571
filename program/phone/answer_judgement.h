// What the library made of a document, read from the log lines of the answer's own call.

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace headsetmgmt::program {

/// An accessory that could not use the document.
struct DocumentFailure {
    std::string model;  ///< as the library looks it up; empty when it did not get so far
    std::string reason;
};

/// What was decided on an accessory's firmware.
struct FirmwareDecision {
    std::string model;         ///< of the accessory; empty when it is not told
    std::string dongle_model;  ///< of the dongle that the firmware is for; empty without one
    std::string decision;
    std::optional<std::string> reported;  ///< version that the accessory or the dongle has
    std::optional<std::string> wanted;    ///< version that the document wants
};

/// A setting of the document that could not be read.
struct PassedOverSetting {
    std::string list;  ///< "commonSettings" or "firmwareParams"
    std::string name;  ///< empty when it has none
    std::string reason;
    std::size_t accessories = 0;      ///< that lack it
    std::vector<std::string> models;  ///< of the first hundred of them; one of "firmwareParams" is
                                      ///< for one model
};

/// Settings that an accessory's object keeps, none of which was sent to the device.
struct UnsentSettings {
    std::string model;
    long count = 0;
    std::string reason;
};

/// No function of the library tells a host whether a document was taken; the lines that arrive on
/// the calling thread inside `httpResponse` do. Shown each of them, this tells. One thread.
class AnswerJudgement {
public:
    /// `text` is the document as it was fetched; borrowed until the last line.
    explicit AnswerJudgement(std::string_view text) : document(text) {}

    void on_line(const std::string& line);

    /// An allocation has failed since the line before: the parser reports it as a fault of the
    /// text.
    void on_lack_of_memory() { turn.lacks_memory = true; }

    /// Accessories that took the document.
    int taken() const { return taken_count; }

    /// Accessories that could not use it.
    const std::vector<DocumentFailure>& failures() const { return failed; }

    /// Nobody was waiting for the answer.
    bool was_dropped() const { return dropped; }

    /// What was decided on the firmware, once for each accessory that got so far.
    const std::vector<FirmwareDecision>& firmware_decisions() const { return decisions; }

    /// The first hundred settings that could not be read; one of the common settings once, whoever
    /// lacks it. A document has room for millions.
    const std::vector<PassedOverSetting>& passed_over() const { return unread; }

    /// How many could not be read.
    std::size_t passed_over_count() const { return unread_count; }

    /// Settings that were kept but not sent.
    const std::vector<UnsentSettings>& unsent() const { return kept; }

private:
    /// A search for a model's entry.
    struct Search {
        std::string model;
        bool has_entries = true;
        bool is_served = false;
        std::vector<std::string> compared;  // the first of them
        std::size_t compared_count = 0;
    };

    /// What the lines of one accessory have told so far.
    struct Turn {
        bool is_parsed = false;  // a text that is no JSON is told in a line that may read otherwise
        bool lacks_memory = false;
        std::string model;
        std::string dongle_model;
        std::string reason;            // why it may fail
        std::optional<Search> search;  // the latest
        // Settings.
        std::size_t common_faults = 0;
        std::size_t firmware_faults = 0;
        long kept_count = 0;
        // Firmware.
        std::string firmware_entries;
        std::optional<std::string> wanted_version;
        std::optional<std::string> reported_version;
        bool is_spelling_refused = false;
    };

    /// The settings of one list that could not be read.
    struct FaultyList {
        std::size_t count = 0;
        std::vector<std::size_t> places;  // of the first of them in `unread`
    };

    bool on_manager_line(const std::string& line);
    void on_document_line(const std::string& message);
    bool on_settings_line(const std::string& message);
    void on_fault(const std::string& message);
    void pass_over(const std::string& name, const char* reason);
    bool on_search_line(const std::string& message);
    bool on_firmware_line(const std::string& message);
    bool on_decision_line(const std::string& message);
    void decide(const std::string& decision);
    void keep_unsent(const std::string& reason);
    std::string failed_search() const;
    std::string failed_search_details() const;
    std::string unknown_version() const;

    std::string_view document;
    Turn turn;
    int taken_count = 0;
    bool dropped = false;
    std::vector<DocumentFailure> failed;
    std::vector<FirmwareDecision> decisions;
    std::vector<PassedOverSetting> unread;
    std::size_t unread_count = 0;
    std::map<std::pair<std::string, std::string>, FaultyList> faulty_lists;  // by list and model
    std::vector<UnsentSettings> kept;
    std::string parse_reason;  // the same for every accessory, and costly
};

}  // namespace headsetmgmt::program
