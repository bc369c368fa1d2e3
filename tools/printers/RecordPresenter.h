#pragma once

#include "filters/RecordFilter.h"
#include "printers/Printer.h"
#include "records/RecordStream.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Recognises records that several inputs hold, as when two appenders of one program wrote the same message.
///
/// It keeps the latest records, up to 16 MiB. In the order of time, equal ones are close together.
class Repetitions {
public:
    /// Takes the next record of any input.
    /// \param stream at a record that is no continuation
    /// \return true if another input had an equal one before: with the same time, logger, level, location and text,
    ///         and of the same process if both show it
    bool isRepeated(std::size_t input, RecordStream& stream);

private:
    struct Seen {
        std::size_t input;
        std::string process; ///< empty if the layout does not show it
    };
    using Table = std::multimap<std::string, Seen>;

    void keep(std::string record, Seen seen);

    Table seen_;
    std::deque<Table::const_iterator> order_; ///< the oldest first
    std::size_t size_ = 0;
};

/// Makes the text of the wanted records and of those around them. A continuation is shown if its record was.
class RecordPresenter {
public:
    /// The references must outlive this object.
    RecordPresenter(const RecordFilter& filter, Printer& printer, std::size_t inputs)
        : filter_(filter), printer_(printer), fates_(inputs) {}

    /// Also shows `count` records before and after each wanted one.
    void showContext(std::size_t count) { context_ = count; }

    /// Ignores records that another input had before.
    void leaveOutRepetitions() { repetitions_.emplace(); }

    /// Shows nothing until `release`, and then only the last `count` wanted records.
    void keepLast(std::size_t count) { limit_ = count; }

    /// \param input the index of the input whose stream has advanced to its next record
    /// \return the text to show, valid until the next call; empty if there is none now
    const std::string& show(std::size_t input, RecordStream& stream);

    /// Ends what `keepLast` began, if it was called.
    /// \return the text to show, valid until the next call
    const std::string& release();

    /// \return what was dropped from records that may be shown later; empty if nothing was
    const std::string& problem() const { return problem_; }

    /// \return what follows all records
    const std::string& end();

private:
    /// A record that is shown, or may be.
    struct Entry {
        std::uint64_t number; ///< among the records of all inputs
        bool isWanted;
        std::string text;
    };
    struct Fate {
        enum { LEFT_OUT, HELD, SHOWN } kind = LEFT_OUT;
        std::uint64_t number = 0;
    };

    bool judge(std::size_t input, RecordStream& stream);
    std::string& hold();
    void showHeld();
    std::string& placeOf(const Fate& fate);
    bool isFull() const;
    std::string& placeFor(std::uint64_t number, bool isWanted);
    void dropBeyondLimit();
    void addGap(std::uint64_t number);

    const RecordFilter& filter_;
    Printer& printer_;
    std::size_t context_ = 0;
    std::optional<std::size_t> limit_; ///< while the last records are kept
    std::optional<Repetitions> repetitions_;
    std::vector<Fate> fates_;     ///< for each input, of its last record
    std::uint64_t number_ = 0;    ///< of the last record
    std::uint64_t lastShown_ = 0; ///< 0 before the first one
    std::size_t following_ = 0;   ///< how many more records are shown after a wanted one
    std::deque<Entry> held_;      ///< at most `context_`, which are shown if the next one is wanted
    std::deque<Entry> kept_;      ///< until `release`
    std::size_t keptWanted_ = 0;  ///< how many of them are wanted
    std::string text_;
    std::string nowhere_;
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
