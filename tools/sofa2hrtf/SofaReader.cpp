// SPDX-License-Identifier: MIT
#include "SofaReader.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mysofa.h>
#include <numbers>
#include <optional>
#include <set>
#include <utility>

namespace SofaTool {

namespace {

constexpr unsigned kMostMeasurements = 100000;
constexpr unsigned kMostTaps = 16384;
constexpr double kMostNumbers = 1 << 28;
constexpr double kLongestDelaySamples = 16384.0;
constexpr float kLoudest = 1e6f;  // beyond, spectra and fits overflow
constexpr double kLowestRate = 8000.0;
constexpr double kHighestRate = 384000.0;
constexpr double kSameDirectionDeg = 0.01;

[[noreturn]] void Fail(const std::string& text) { throw tav::Exception(text); }

// ---- The container, before anybody else looks at it

std::uint64_t LittleEndian(std::span<const char> bytes, std::size_t at) {
    std::uint64_t value = 0;
    for (std::size_t i = 8; i-- > 0;) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

}  // namespace

void CheckContainer(std::span<const char> bytes) {
    constexpr char kSignature[] = {'\x89', 'H', 'D', 'F', '\r', '\n', '\x1a', '\n'};
    constexpr std::size_t kLongestSuperblock = 96;
    CheckFileSize(bytes.size());
    if (bytes.size() < kLongestSuperblock ||
        !std::equal(std::begin(kSignature), std::end(kSignature), bytes.begin())) {
        Fail("this is no SOFA file (no HDF5 signature)");
    }
    const bool isOld = bytes[8] == 0 || bytes[8] == 1;
    if (!isOld && bytes[8] != 2 && bytes[8] != 3) Fail("unknown version of HDF5");
    const std::size_t sizes = isOld ? 13 : 9;
    if (bytes[sizes] != 8 || bytes[sizes + 1] != 8)
        Fail("HDF5 with addresses of other than 64 bits");
    const std::size_t base = isOld ? (bytes[8] == 1 ? 28 : 24) : 12;
    if (LittleEndian(bytes, base) != 0) Fail("HDF5 that does not begin with the file");
    if (LittleEndian(bytes, base + 16) > bytes.size()) Fail("the file is truncated");
}

void CheckFileSize(std::uintmax_t numBytes) {
    constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 30;
    if (numBytes > kLargestFile) Fail("the file is larger than 1 GB");
}

namespace {

struct FreeSofa {
    void operator()(MYSOFA_HRTF* hrtf) const noexcept { mysofa_free(hrtf); }
};
using Loaded = std::unique_ptr<MYSOFA_HRTF, FreeSofa>;

Loaded Load(std::span<const char> bytes) {
    int fault = MYSOFA_OK;
    Loaded hrtf(mysofa_load_data(bytes.data(), bytes.size(), &fault));
    if (hrtf == nullptr || fault != MYSOFA_OK) {
        Fail("libmysofa cannot read it (error " + std::to_string(fault) + ")");
    }
    return hrtf;
}

// ---- Fields

std::string AttributeOf(const MYSOFA_ATTRIBUTE* list, std::string_view name) {
    for (; list != nullptr; list = list->next) {
        if (list->name != nullptr && name == list->name) return list->value ? list->value : "";
    }
    return {};
}

/// An array as a field with a name.
class Field {
public:
    Field(const char* name, const MYSOFA_ARRAY& array) : name_(name), array_(array) {
        const auto values = Values();
        if (!std::ranges::all_of(values, [](float v) { return std::isfinite(v); })) {
            Refuse("holds a number that is not finite");
        }
    }
    [[noreturn]] void Refuse(const std::string& what) const {
        Fail(std::string(name_) + " " + what);
    }
    std::span<const float> Values() const {
        if (array_.values == nullptr) return {};
        return {array_.values, array_.elements};
    }
    /// @param counts  that would do
    void ExpectCount(std::initializer_list<std::size_t> counts) const {
        if (std::ranges::find(counts, Values().size()) != counts.end()) return;
        Refuse("has " + std::to_string(Values().size()) + " numbers, expected " +
               std::to_string(*counts.begin()));
    }
    /// Triplet `index` of positions, in the frame of SOFA: x ahead, y left, z up.
    /// @param stride  from one number of a triplet to the next
    std::array<double, 3> Position(std::size_t index, std::size_t stride = 1) const {
        const auto number = [&](std::size_t k) {
            return static_cast<double>(Values()[(3 * index + k) * stride]);
        };
        const double a = number(0), b = number(1), c = number(2);
        const std::string type = AttributeOf(array_.attributes, "Type");
        if (type == "cartesian") return {a, b, c};
        if (type != "spherical") Refuse("has the coordinate type \"" + type + "\"");
        const double azimuth = a * std::numbers::pi / 180.0,
                     elevation = b * std::numbers::pi / 180.0;
        return {c * std::cos(elevation) * std::cos(azimuth),
                c * std::cos(elevation) * std::sin(azimuth), c * std::sin(elevation)};
    }

private:
    const char* name_;
    const MYSOFA_ARRAY& array_;
};

class Reader {
public:
    explicit Reader(const MYSOFA_HRTF& hrtf) : hrtf_(hrtf) {}

    SofaSet Read() {
        CheckKind();
        CheckDimensions();
        ReadRate();
        for (const auto* a = hrtf_.attributes; a != nullptr; a = a->next) {
            if (a->name != nullptr && a->value != nullptr) set_.attributes[a->name] = a->value;
        }
        ReadMeasurements();
        return std::move(set_);
    }

private:
    void CheckKind() const {
        const auto expect = [this](const char* name, std::string_view value) {
            const std::string found = AttributeOf(hrtf_.attributes, name);
            if (found != value) {
                Fail(std::string(name) + " is \"" + found + "\", expected \"" + std::string(value) +
                     "\"");
            }
        };
        expect("Conventions", "SOFA");
        expect("SOFAConventions", "SimpleFreeFieldHRIR");
        expect("DataType", "FIR");
    }

    void CheckDimensions() const {
        const auto within = [](const char* name, unsigned value, unsigned lowest,
                               unsigned highest) {
            if (value >= lowest && value <= highest) return;
            Fail(std::string("dimension ") + name + " is " + std::to_string(value) + ", expected " +
                 std::to_string(lowest) +
                 (lowest == highest ? "" : " to " + std::to_string(highest)));
        };
        within("R", hrtf_.R, 2, 2);
        within("C", hrtf_.C, 3, 3);
        within("M", hrtf_.M, 1, kMostMeasurements);
        within("N", hrtf_.N, 1, kMostTaps);
        if (2.0 * hrtf_.M * hrtf_.N > kMostNumbers) Fail("Data.IR is too large");
    }

    void ReadRate() {
        const Field rate("Data.SamplingRate", hrtf_.DataSamplingRate);
        rate.ExpectCount({1, hrtf_.M});
        const auto values = rate.Values();
        if (std::ranges::any_of(values, [&](float v) { return v != values[0]; })) {
            rate.Refuse("differs between measurements");
        }
        set_.rateHz = static_cast<double>(values[0]);
        if (set_.rateHz < kLowestRate || set_.rateHz > kHighestRate) {
            rate.Refuse("is out of range: 8 to 384 kHz");
        }
    }

    /// The receiver further to the left is the left ear.
    std::size_t LeftReceiver() const {
        const Field receivers("ReceiverPosition", hrtf_.ReceiverPosition);
        receivers.ExpectCount({6, std::size_t{6} * hrtf_.M});
        // Dimensions R, C and I or M, the last one running fastest; those of the first measurement.
        const std::size_t stride = receivers.Values().size() / 6;
        const double first = receivers.Position(0, stride)[1];
        const double second = receivers.Position(1, stride)[1];
        if (first == second) receivers.Refuse("tells no left ear: both have the same y");
        return first > second ? 0 : 1;
    }

    void ReadMeasurements() {
        const Field sources("SourcePosition", hrtf_.SourcePosition);
        const Field responses("Data.IR", hrtf_.DataIR);
        const Field delays("Data.Delay", hrtf_.DataDelay);
        sources.ExpectCount({std::size_t{3} * hrtf_.M});
        responses.ExpectCount({std::size_t{2} * hrtf_.M * hrtf_.N});
        delays.ExpectCount({2, std::size_t{2} * hrtf_.M});
        if (std::ranges::any_of(responses.Values(),
                                [](float v) { return std::abs(v) > kLoudest; })) {
            responses.Refuse("is out of range: -1000000 to 1000000");
        }
        double longest = 0.0;
        for (const float delay : delays.Values()) {
            if (!(delay >= 0.f && static_cast<double>(delay) <= kLongestDelaySamples)) {
                delays.Refuse("is out of range: 0 to 16384 samples");
            }
            longest = std::max(longest, static_cast<double>(delay));
        }
        const std::size_t left = LeftReceiver();
        const std::size_t length = hrtf_.N + static_cast<std::size_t>(std::ceil(longest));
        if (2.0 * hrtf_.M * static_cast<double>(length) > kMostNumbers) {
            Fail("Data.IR with the delays of Data.Delay is too large");
        }
        std::set<std::pair<long, long>> seen;
        for (std::size_t m = 0; m < hrtf_.M; ++m) {
            const auto p = sources.Position(m);
            if (IsDuplicate(p, seen)) {
                set_.warnings.push_back("SourcePosition " + std::to_string(m + 1) +
                                        " is a direction that is there already: left out");
                continue;
            }
            Measurement measurement;
            measurement.position = {static_cast<float>(-p[1]), static_cast<float>(p[0]),
                                    static_cast<float>(p[2])};
            for (std::size_t ear = 0; ear < 2; ++ear) {
                const std::size_t receiver = ear == 0 ? left : 1 - left;
                const std::size_t row = 2 * m + receiver;
                const bool shared = delays.Values().size() == 2;
                const double delay = static_cast<double>(delays.Values()[shared ? receiver : row]);
                measurement.ears[ear] =
                    Delayed(responses.Values().subspan(row * hrtf_.N, hrtf_.N), delay, length);
            }
            set_.measurements.push_back(std::move(measurement));
        }
    }

    bool IsDuplicate(const std::array<double, 3>& p, std::set<std::pair<long, long>>& seen) const {
        const double r = std::hypot(p[0], p[1], p[2]);
        if (!(r > 1e-6)) Fail("SourcePosition holds the centre of the head");
        const double elevation = std::asin(std::clamp(p[2] / r, -1.0, 1.0));
        // Near the poles all azimuths are one direction.
        const double azimuth = std::cos(elevation) < 1e-4 ? 0.0 : std::atan2(p[1], p[0]);
        const auto step = [](double rad) {
            return std::lround(rad * 180.0 / std::numbers::pi / kSameDirectionDeg);
        };
        return !seen.insert({step(azimuth) == -18000 ? 18000 : step(azimuth), step(elevation)})
                    .second;
    }

    /// Later by a number of samples: between samples by a windowed sinc.
    static std::vector<float> Delayed(std::span<const float> taps,
                                      double delay,
                                      std::size_t length) {
        constexpr long kReach = 32;
        const double whole = std::floor(delay), part = delay - whole;
        std::vector<float> result(length);
        const auto shift = static_cast<long>(whole);
        const auto end = static_cast<long>(length);
        for (std::size_t k = 0; k < taps.size(); ++k) {
            const long centre = static_cast<long>(k) + shift;
            if (part == 0.0) {
                result[static_cast<std::size_t>(centre)] = taps[k];
                continue;
            }
            for (long n = std::max(centre - kReach, 0L); n <= std::min(centre + kReach, end - 1);
                 ++n) {
                const double x = std::numbers::pi * (static_cast<double>(n - centre) - part);
                const double window = 0.5 + 0.5 * std::cos(x / (kReach + 1.0));
                result[static_cast<std::size_t>(n)] +=
                    static_cast<float>(static_cast<double>(taps[k]) * std::sin(x) / x * window);
            }
        }
        return result;
    }

    const MYSOFA_HRTF& hrtf_;
    SofaSet set_;
};

}  // namespace

SofaSet SetOf(const MYSOFA_HRTF& hrtf) { return Reader(hrtf).Read(); }

SofaSet ReadSofa(std::span<const char> bytes) {
    CheckContainer(bytes);
    const Loaded hrtf = Load(bytes);
    return SetOf(*hrtf);
}

}  // namespace SofaTool
