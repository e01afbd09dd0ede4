#include "demo/ShotFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "demo/Progress.h"
#include "demo/Text.h"

namespace demo {
namespace {

constexpr std::size_t kColumns = 15;
constexpr std::size_t kLongestLine = 4095;  // fifteen numbers need a tenth of it; keeps a hostile file small
constexpr double kLongestTravel = 60.0;     // seconds; to the deepest trench and back takes a quarter of it
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\v\f";

/// What is wrong with a line. The reader knows which file and line it is.
struct LineError {
    std::string wrong;
    bool isShort = false;  // columns are missing, as they are where a file was cut
};

using Row = std::array<double, kColumns>;

std::string PlaceOf(const std::string& name, std::size_t line) {
    if (line == 0) return name;
    return name + ':' + std::to_string(line);
}

// The columns of a line without its comment; false if nothing is left.
bool ParseRow(std::string_view line, Row& row) {
    line = line.substr(0, line.find('#'));
    std::size_t count = 0;
    for (std::size_t at = 0; (at = line.find_first_not_of(kBlanks, at)) != std::string_view::npos; ++count) {
        const std::size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
        const std::string_view column = line.substr(at, end - at);
        if (count == kColumns) throw LineError{"more than 15 columns"};
        const auto value = ParseNumber(column);
        if (!value) throw LineError{"column " + std::to_string(count + 1) + " is no number: " + Quoted(column)};
        row[count] = *value;
        at = end;
    }
    if (count != 0 && count != kColumns) throw LineError{std::to_string(count) + " columns where a shot has 15", true};
    return count != 0;
}

Shot ShotOf(const Row& row) {
    Shot shot = {row[0], {row[1], row[2], row[3]}, row[7], {row[8], row[9], row[10]}, row[14]};
    if (shot.receiveTime <= shot.transmitTime) throw LineError{"the receive time is not after the transmit time"};
    if (shot.travelTime <= 0.0) throw LineError{"the travel time is not above zero"};
    if (shot.travelTime > kLongestTravel) throw LineError{"the travel time is longer than 60 seconds"};
    return shot;
}

// The next line, without its end; false behind the last one. The storage bounds what a line may take.
bool ReadLine(std::istream& in, std::array<char, kLongestLine + 1>& storage, std::string_view& line) {
    in.getline(storage.data(), static_cast<std::streamsize>(storage.size()));
    const auto taken = static_cast<std::size_t>(in.gcount());
    if (in.bad()) throw LineError{"cannot be read on"};
    if (in.fail() && in.eof()) return false;
    if (in.fail()) throw LineError{"longer than " + std::to_string(kLongestLine) + " characters"};
    // The end of the line counts as taken, but the end of the file does not.
    line = {storage.data(), in.eof() ? taken : taken - 1};
    return true;
}

}  // namespace

ShotFileError::ShotFileError(const std::string& name, std::size_t line, const std::string& wrong)
    : std::runtime_error(PlaceOf(name, line) + ": " + wrong), line_(line) {}

std::vector<Shot> ReadShots(std::istream& in, const std::string& name) {
    std::vector<Shot> shots;
    Progress progress("read", "shots");
    std::array<char, kLongestLine + 1> storage;
    std::size_t lineNumber = 1;
    try {
        Row row;
        for (std::string_view line; ReadLine(in, storage, line); ++lineNumber) {
            if (lineNumber == 1 && line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
            if (!ParseRow(line, row)) continue;
            shots.push_back(ShotOf(row));
            progress.At(shots.size());
        }
    } catch (const LineError& error) {
        const bool isCut = error.isShort && in.eof();  // the last line, and it has no end
        throw ShotFileError(name, lineNumber, error.wrong + (isCut ? "; the file seems to be cut here" : ""));
    }
    if (shots.empty()) throw ShotFileError(name, lineNumber, "the file ends without a shot");
    return shots;
}

std::vector<Shot> ReadShotFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw ShotFileError(path, 0, "is a directory");
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ShotFileError(path, 0, std::string("cannot be opened: ") + std::strerror(errno));
    return ReadShots(file, path);
}

}  // namespace demo
