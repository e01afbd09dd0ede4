#pragma once

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>

namespace tarvex {

/// What the bus counts over the life of the process.
enum class Count {
    Sent,       ///< accepted from the program
    Resent,     ///< sent once more after a cut
    Received,   ///< queued for the program
    Repeated,   ///< came once more, dropped
    Foreign,    ///< no message of the bus, dropped
    Overflown,  ///< the program was behind and its queue full, dropped
    Refused,    ///< the stream did not take it, sent once more
    Lost,       ///< accepted, but the server or the stream takes no message of that length
    Denied,     ///< the server said that it does not permit it
    Reconnected,
    Last = Reconnected
};

/// Counts, and writes what happens with the connection, a line each, to the file that `TARVEX_LOG` names
/// ("-" for the standard error); nowhere if it is unset. Any thread may call, also when memory is at its end:
/// a line is cut at `kLongestLine`.
class Journal {
public:
    explicit Journal(std::string who);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void Add(Count what, std::uint64_t number = 1) { At(what).fetch_add(number, std::memory_order_relaxed); }
    std::uint64_t Get(Count what) const { return counts_[Index(what)].load(std::memory_order_relaxed); }

    /// A line in the form of printf.
    [[gnu::format(printf, 2, 3)]] void Tell(const char* format, ...);
    /// The line for something that may happen often: only at its 1st, 10th, 100th and so on.
    [[gnu::format(printf, 3, 4)]] void AddAndTell(Count what, const char* format, ...);
    void TellCounts();

private:
    static constexpr std::size_t kLongestLine = 2048;

    void Write(const char* format, va_list parts, std::uint64_t number);
    static std::size_t Index(Count what) { return static_cast<std::size_t>(what); }
    std::atomic<std::uint64_t>& At(Count what) { return counts_[Index(what)]; }

    std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(Count::Last) + 1> counts_{};
    const std::string who_;
    int file_ = -1;
};

}  // namespace tarvex
