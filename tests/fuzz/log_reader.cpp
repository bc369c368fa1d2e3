// What a log file may hold: any bytes. Cut into records they must make up the file again but for the CR of a
// CR LF, and a record's parts must lie within it, whichever layout it is read with. Each structured line
// begins a record that is shown with its time. What begins as a packed file does is unpacked, or refused.

#include "inputs/LogContent.h"
#include "records/RecordReader.h"
#include "records/TextLines.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

using namespace ZAV;
using namespace ZAV::Tools;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::string withoutCarriageReturns(const std::string& content) {
    std::string text;
    for (std::size_t place = 0; place < content.size(); ++place) {
        const bool endsLine = content.compare(place, 2, "\r\n") == 0;
        text += endsLine ? "" : content.substr(place, 1);
    }
    return text;
}

bool liesIn(std::string_view part, std::string_view whole) {
    return part.empty() ||
           (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

void parse(const Record& record, Layout layout) {
    const Fields fields = parseRecord(record.lines, layout);
    for (const std::string_view word :
         {fields.program, fields.pid, fields.host, fields.logger, fields.file, fields.line}) {
        require(liesIn(word, record.lines));
        require(word.find_first_of(" \n") == std::string_view::npos);
    }
    require(liesIn(fields.text, record.lines));
    require(fields.text.empty() ||
            fields.text.data() + fields.text.size() == record.lines.data() + record.lines.size());
    require(layoutOf(record.lines) != Layout::PLAIN || layout == Layout::PROCESS || fields.hasLevel);
}

std::string readAll(const LogContent& file) {
    RecordReader reader(file);
    Record record;
    std::string whole;
    while (reader.next(record) || reader.takeRest(record, true)) {
        require(record.hasTime || whole.empty());
        whole += std::string(record.lines) + '\n';
        if (record.hasTime) {
            parse(record, Layout::PLAIN);
            parse(record, Layout::PROCESS);
        }
    }
    return whole;
}

void readStructuredLines(const LogContent& file) {
    LineForm form;
    form.columns = {Log::Column::UTC, Log::Column::LEVEL, Log::Column::PLACE, Log::Column::TEXT};
    for (const LineForm& known : {LineForm(), form}) {
        RecordReader reader(file, 0, known);
        Record record;
        while (reader.next(record) || reader.takeRest(record, true)) {
            if (record.hasTime) {
                require(startsWithTime(record.lines) && reader.lowestFrom(record.time()) <= record.time());
            }
            if (record.hasTime && record.structured != nullptr) {
                const Fields fields = record.structured->fields();
                require(liesIn(fields.text, record.lines));
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path =
        std::filesystem::temp_directory_path() / ("log_reader_fuzz." + std::to_string(std::rand()));
    const std::string content(reinterpret_cast<const char*>(data), size);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    LogContent file;
    std::string problem;
    require(file.open(path, problem));
    if (file.isPacked()) {
        readAll(file);
        return 0;
    }
    std::string expected = withoutCarriageReturns(content);
    if (!expected.empty() && expected.back() != '\n') {
        expected += '\n';
    }
    require(readAll(file) == expected);
    readStructuredLines(file);
    return 0;
}
