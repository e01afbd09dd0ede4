#pragma once

#include <Eigen/Core>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace demo {

/// One acoustic ranging: a transducer calls the transponder and hears its answer.
struct Shot {
    double transmitTime;       ///< seconds since 2020-01-01 UTC
    Eigen::Vector3d transmit;  ///< transducer at that time: north, east, up in metres from the file's origin
    double receiveTime;        ///< seconds since 2020-01-01 UTC; includes the transponder's own delay
    Eigen::Vector3d receive;   ///< transducer at that time, likewise
    double travelTime;         ///< seconds in the water, there and back
};

/// A file that is no file of shots. `what` reads "FILE:LINE: what is wrong", without the line if it is
/// about the file as a whole.
class ShotFileError : public std::runtime_error {
public:
    ShotFileError(const std::string& name, std::size_t line, const std::string& wrong);
    std::size_t Line() const { return line_; }  ///< from 1; 0 if it is about the file as a whole

private:
    std::size_t line_;
};

/// Reads a file of shots: on each line 15 numbers,
///
///     transmit time, N, E, U, their three sigmas, receive time, N, E, U, their three sigmas, travel time
///
/// separated by blanks or tabs. "#" starts a comment; empty lines do not count. The sigmas are not used.
/// At least one shot comes back; raises `ShotFileError` for anything that is not of this form.
std::vector<Shot> ReadShotFile(const std::string& path);

/// The same from a stream; `name` stands for the file in messages.
std::vector<Shot> ReadShots(std::istream& in, const std::string& name);

}  // namespace demo
