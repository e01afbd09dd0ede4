#include <surveymsg/platform/detail/SeededHash.h>

#include <bit>
#include <chrono>
#include <cstring>
#include <exception>
#include <random>

namespace surveymsg::detail {
namespace {

struct Key {
    std::uint64_t low;
    std::uint64_t high;
};

std::uint64_t Draw(std::random_device& source) { return (std::uint64_t{source()} << 32) | source(); }

Key DrawKey() {
    try {
        std::random_device source;
        return {Draw(source), Draw(source)};
    } catch (const std::exception&) {
        // Without a random source the clock and the place of the stack still differ from run to run.
        const auto ticks = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        return {ticks, reinterpret_cast<std::uintptr_t>(&ticks) * 0x9E3779B97F4A7C15u};
    }
}

struct State {
    std::uint64_t a, b, c, d;

    void Round() {
        a += b;
        b = std::rotl(b, 13) ^ a;
        a = std::rotl(a, 32);
        c += d;
        d = std::rotl(d, 16) ^ c;
        a += d;
        d = std::rotl(d, 21) ^ a;
        c += b;
        b = std::rotl(b, 17) ^ c;
        c = std::rotl(c, 32);
    }
    void Absorb(std::uint64_t word) {
        d ^= word;
        Round();
        a ^= word;
    }
};

}  // namespace

std::uint64_t SeededHash(std::string_view text) {
    static const Key key = DrawKey();
    State state{key.low ^ 0x736F6D6570736575u, key.high ^ 0x646F72616E646F6Du, key.low ^ 0x6C7967656E657261u,
                key.high ^ 0x7465646279746573u};
    const char* next = text.data();
    std::size_t left = text.size();
    for (; left >= 8; left -= 8, next += 8) {
        std::uint64_t word;
        std::memcpy(&word, next, 8);
        state.Absorb(word);
    }
    std::uint64_t last = std::uint64_t{text.size()} << 56;
    if (left > 0) std::memcpy(&last, next, left);
    state.Absorb(last);
    state.c ^= 0xFF;
    for (int i = 0; i < 3; ++i) state.Round();
    return state.a ^ state.b ^ state.c ^ state.d;
}

}  // namespace surveymsg::detail
