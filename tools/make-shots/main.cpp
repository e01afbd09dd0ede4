// Writes an acoustic ranging campaign that never took place: a ship sails circles and crosses over a
// seabed transponder whose position is known. The same count and seed give the same bytes everywhere, so
// nothing here rests on a library's generator, sine or cosine: only on +, -, *, / and the square root,
// which are the same on every machine.

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

struct Point {
    double north, east, up;  // metres
};

constexpr Point kTransponder = {1.25, -2.5, 0.75};
constexpr double kSoundSpeed = 1499.3;  // metres per second
constexpr double kDelay = 0.2;          // seconds from hearing to answering
constexpr double kNoise = 0.03;         // metres on the two-way path
constexpr double kOutlierShare = 0.04;
constexpr double kKeelUp = 56.0;              // metres, mean height of the transducer above the origin
constexpr double kShipSpeed = 0.8;            // metres per second
constexpr double kFirstTime = 100'000'000.0;  // seconds since 2020-01-01 UTC
constexpr double kInterval = 10.0;            // seconds between shots
constexpr std::uint64_t kCircleShots = 60;
constexpr std::uint64_t kLegShots = 30;
constexpr std::uint64_t kLapShots = kCircleShots + 2 * kLegShots;  // a circle and both legs of a cross
constexpr double kHalfStepTangent = 0.0524;                        // of half of 6 degrees, a circle's sixtieth
constexpr std::uint64_t kMostShots = 10'000'000;

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {
        for (int i = 0; i < 8; ++i) Uniform();  // seeds that are close must not start alike
    }
    /// From 0 to below 1.
    double Uniform() {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(state_ >> 11) / 9007199254740992.0;
    }
    /// Nearly normal, of variance 1: a sum of twelve, which needs no logarithm.
    double Normal() {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) sum += Uniform();
        return sum;
    }

private:
    std::uint64_t state_;
};

/// The ship's track: where it is and which way it goes, shot by shot.
class Track {
public:
    explicit Track(Random& random) : random_(random) {}

    void Next(Point& place, Point& velocity) {
        const std::uint64_t inLap = shot_++ % kLapShots;
        if (inLap == 0) radius_ = 80.0 + 80.0 * random_.Uniform();
        heave_ = 0.8 * heave_ + 0.15 * random_.Normal();
        if (inLap < kCircleShots) {
            Turn();
            place = {radius_ * cosine_, radius_ * sine_, kKeelUp + heave_};
            velocity = {-kShipSpeed * sine_, kShipSpeed * cosine_, 0.1 * random_.Normal()};
            return;
        }
        const std::uint64_t inLegs = inLap - kCircleShots;
        const double along = radius_ * (2.0 * static_cast<double>(inLegs % kLegShots) / (kLegShots - 1.0) - 1.0);
        const double aside = 3.0 * random_.Normal();
        const bool northward = inLegs < kLegShots;
        place = {northward ? along : aside, northward ? aside : along, kKeelUp + heave_};
        velocity = {northward ? kShipSpeed : 0.0, northward ? 0.0 : kShipSpeed, 0.1 * random_.Normal()};
    }

private:
    void Turn() {
        constexpr double kSquare = kHalfStepTangent * kHalfStepTangent;
        constexpr double kCosine = (1.0 - kSquare) / (1.0 + kSquare);
        constexpr double kSine = 2.0 * kHalfStepTangent / (1.0 + kSquare);
        const double cosine = cosine_ * kCosine - sine_ * kSine;
        const double sine = sine_ * kCosine + cosine_ * kSine;
        const double length = std::sqrt(cosine * cosine + sine * sine);  // or rounding adds up over many laps
        cosine_ = cosine / length;
        sine_ = sine / length;
    }

    Random& random_;
    std::uint64_t shot_ = 0;
    double radius_ = 0.0;
    double heave_ = 0.0;
    double cosine_ = 1.0;
    double sine_ = 0.0;
};

double RangeTo(const Point& place) {
    const double north = place.north - kTransponder.north;
    const double east = place.east - kTransponder.east;
    const double up = place.up - kTransponder.up;
    return std::sqrt(north * north + east * east + up * up);
}

// Places go into the file with four decimals, and the travel time must be the one between those.
double Rounded(double value) { return std::floor(value * 1e4 + 0.5) / 1e4; }
Point Rounded(const Point& place) { return {Rounded(place.north), Rounded(place.east), Rounded(place.up)}; }

Point Moved(const Point& place, const Point& velocity, double seconds) {
    return {place.north + velocity.north * seconds, place.east + velocity.east * seconds,
            place.up + velocity.up * seconds};
}

void WritePlace(double time, const Point& place) {
    std::printf(" %16.7f %9.4f %9.4f %9.4f 0.0170 0.0150 0.0180 ", time, place.north, place.east, place.up);
}

void WriteShot(double time, const Point& transmitted, const Point& velocity, Random& random) {
    const Point transmit = Rounded(transmitted);
    // How far the ship gets depends on the travel time, and the other way round; this settles fast.
    double travel = 2.0 * RangeTo(transmit) / kSoundSpeed;
    Point receive{};
    for (int i = 0; i < 3; ++i) {
        receive = Rounded(Moved(transmit, velocity, travel + kDelay));
        travel = (RangeTo(transmit) + RangeTo(receive)) / kSoundSpeed;
    }
    double error = kNoise * random.Normal();
    // Mostly an echo over a longer path is heard, sometimes noise ahead of the answer.
    if (random.Uniform() < kOutlierShare) {
        const double size = 0.5 + 4.5 * random.Uniform();
        error += random.Uniform() < 0.75 ? size : -size;
    }
    travel += error / kSoundSpeed;
    WritePlace(time, transmit);
    WritePlace(time + kDelay + travel, receive);
    std::printf(" %.7f\n", travel);
}

bool ParseCount(const char* text, std::uint64_t& count) {
    const char* end = text + std::strlen(text);
    const auto [parsed, failure] = std::from_chars(text, end, count);
    return failure == std::errc() && parsed == end && parsed != text;
}

}  // namespace

int main(int argc, char** argv) {
    std::uint64_t count = kLapShots;
    std::uint64_t seed = 1;
    if (argc > 3 || (argc > 1 && !ParseCount(argv[1], count)) || (argc > 2 && !ParseCount(argv[2], seed)) ||
        count == 0 || count > kMostShots) {
        std::fputs("usage: surveymsg-make-shots [COUNT] [SEED]\n", stderr);
        return 2;
    }
    std::printf("# Synthetic acoustic ranging, %llu shots, seed %llu. Transponder at N %.2f E %.2f U %.2f m.\n",
                static_cast<unsigned long long>(count), static_cast<unsigned long long>(seed), kTransponder.north,
                kTransponder.east, kTransponder.up);
    std::printf("# time0_transmit N0 E0 U0 sigN0 sigE0 sigU0 time1_receive N1 E1 U1 sigN1 sigE1 sigU1 TWTT(s)\n");
    std::printf("# times in seconds after 2020-01-01 00:00:00 UTC, lengths in metres from the file's origin\n");
    Random random(seed);
    Track track(random);
    for (std::uint64_t i = 0; i < count; ++i) {
        Point place{};
        Point velocity{};
        track.Next(place, velocity);
        WriteShot(kFirstTime + kInterval * static_cast<double>(i), place, velocity, random);
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fputs("surveymsg-make-shots: the shots cannot be written\n", stderr);
        return 1;
    }
}
