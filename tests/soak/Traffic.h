#pragma once

#include <surveymsg/surveymsg.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace soak {

inline constexpr const char* kGood = "Good";  // identifiers
inline constexpr const char* kHostile = "Hostile";
inline constexpr const char* kRecordKey = "PRX~PositionOffset";
inline constexpr const char* kChangedKey = "Soak~Changed";  // and a number
inline constexpr int kChangedKeys = 50;
inline constexpr const char* kEndKey = "Soak~End";

/// Sends good messages, numbered, and among a hundred one hostile body and one raw record under a format that
/// was changed.
class Producer {
public:
    explicit Producer(std::uint32_t seed) : random_(seed) {}

    /// One message. False if the bus did not take a good one; it is tried again the next time.
    bool SendNext();
    bool SendEnd();
    std::string Report() const;

private:
    bool SendPosition();
    bool SendRecord();
    void SendHostile();
    void SendChanged();
    std::string Spoil(std::string bytes);
    std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random_() % end); }

    std::mt19937 random_;
    std::uint64_t positions_ = 0, records_ = 0, hostile_ = 0, changed_ = 0, refused_ = 0;
    std::string lastBody_;
    std::vector<char> format_;
};

/// Takes whatever comes, makes and decodes it, and uses every member of it.
class Consumer {
public:
    Consumer();
    /// False if nothing came within a second.
    bool TakeNext();
    bool IsAtEnd() const { return isAtEnd_; }
    std::string Report() const;

private:
    void TakePosition();
    void TakeOther();
    static void UseEveryMember(CMsg& message);

    CMsg received_;
    bool isAtEnd_ = false;
    std::uint64_t positions_ = 0, next_ = 1, lost_ = 0, behind_ = 0, spoiled_ = 0, told_ = 0;
    std::uint64_t records_ = 0, hostileTaken_ = 0, hostileRefused_ = 0;
};

}  // namespace soak
