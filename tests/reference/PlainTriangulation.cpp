// SPDX-License-Identifier: MIT
#include "reference/PlainTriangulation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Plain {

namespace {

using V = tav::CartesianVector;

float Dot(V a, V b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
float Length(V a) { return std::sqrt(Dot(a, a)); }
V Cross(V a, V b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
V Minus(V a) { return {-a.x, -a.y, -a.z}; }

V Normalised(V a) {
    const float length = Length(a);
    return length > 0.f ? V{a.x / length, a.y / length, a.z / length} : a;
}

float Angle(V a, V b) {
    const auto azimuth = [](V v) {
        return static_cast<float>(
            std::fabs(std::atan2(static_cast<double>(v.y), static_cast<double>(v.x))));
    };
    if (Length(a) == 0.f && Length(b) == 0.f) return 0.f;
    if (Length(a) == 0.f) return azimuth(b);
    if (Length(b) == 0.f) return azimuth(a);
    float cosine = Dot(a, b) / (Length(a) * Length(b));
    if (std::isnan(cosine)) cosine = 1.f;
    cosine = std::clamp(cosine, -1.f, 1.f);
    return static_cast<float>(std::fabs(std::acos(static_cast<double>(cosine))));
}

float Quality(V i, V j, V k) {
    const V n = Normalised(Cross(i, j));
    const float sum = Angle(i, j) + Angle(i, k) + Angle(j, k);
    return sum > 0.00001f ? std::fabs(Dot(n, k)) / sum : 0.f;
}

bool ArcsCross(V i, V j, V k, V l) {
    const V c = Normalised(Cross(Normalised(Cross(i, j)), Normalised(Cross(k, l))));
    for (const V point : {c, Minus(c)}) {
        for (const V end : {i, j, k, l}) {
            if (Angle(end, point) <= 0.01f) return false;
        }
    }
    for (const V point : {c, Minus(c)}) {
        if (std::fabs(Angle(i, j) - (Angle(point, j) + Angle(i, point))) <= 0.01f &&
            std::fabs(Angle(k, l) - (Angle(point, l) + Angle(k, point))) <= 0.01f) {
            return true;
        }
    }
    return false;
}

struct Pair {
    std::size_t i;
    std::size_t j;
    float length;
};

class Procedure {
public:
    explicit Procedure(const tav::CartesianArray& speakers)
        : speakers_(speakers),
          count_(speakers.Size()),
          connected_(count_ * count_, false) {}

    tav::Vector<Quilo::Triplet> Run() {
        float threshold = 0.01f;
        while (CountAbove(threshold) > 1000000) threshold *= 5.f;
        ForEachTriple([&](auto i, auto j, auto k) {
            if (!(Quality(speakers_[i], speakers_[j], speakers_[k]) > threshold)) return;
            triples_.push_back({i, j, k});
            for (const auto& [a, b] : {std::pair{i, j}, {i, k}, {j, k}}) Connect(a, b, true);
        });
        RemoveCrossings();
        return Survivors();
    }

private:
    template <class Visit>
    void ForEachTriple(Visit visit) const {
        for (std::size_t i = 0; i < count_; ++i) {
            for (std::size_t j = i + 1; j < count_; ++j) {
                for (std::size_t k = j + 1; k < count_; ++k) visit(i, j, k);
            }
        }
    }

    std::size_t CountAbove(float threshold) const {
        std::size_t count = 0;
        ForEachTriple([&](auto i, auto j, auto k) {
            count += Quality(speakers_[i], speakers_[j], speakers_[k]) > threshold ? 1U : 0U;
        });
        return count;
    }

    void Connect(std::size_t a, std::size_t b, bool connected) {
        connected_[a * count_ + b] = connected;
        connected_[b * count_ + a] = connected;
    }
    bool Connected(std::size_t a, std::size_t b) const { return connected_[a * count_ + b]; }

    std::vector<Pair> PairsByLength() const {
        std::vector<Pair> pairs;
        for (std::size_t i = 0; i < count_; ++i) {
            for (std::size_t j = i + 1; j < count_; ++j) {
                if (!Connected(i, j)) continue;
                const Pair pair{i, j, Angle(speakers_[i], speakers_[j])};
                const auto place = std::ranges::find_if(
                    pairs, [&](const Pair& p) { return p.length >= pair.length; });
                pairs.insert(place, pair);
            }
        }
        return pairs;
    }

    void RemoveCrossings() {
        for (const Pair& p : PairsByLength()) {
            if (!Connected(p.i, p.j)) continue;
            for (std::size_t k = 0; k < count_; ++k) {
                for (std::size_t l = k + 1; l < count_; ++l) {
                    if (k == p.i || k == p.j || l == p.i || l == p.j) continue;
                    if (ArcsCross(speakers_[p.i], speakers_[p.j], speakers_[k], speakers_[l])) {
                        Connect(k, l, false);
                    }
                }
            }
        }
    }

    bool AnotherInside(const Quilo::Triplet& triplet) const {
        const auto& m = triplet.inverse;
        for (std::size_t s = 0; s < count_; ++s) {
            if (std::ranges::count(triplet.speakers, s) > 0) continue;
            bool inside = true;
            for (std::size_t r = 0; r < 9; r += 3) {
                inside = inside && Dot({m[r], m[r + 1], m[r + 2]}, speakers_[s]) >= -0.001f;
            }
            if (inside) return true;
        }
        return false;
    }

    static std::array<float, 9> Inverse(V a, V b, V c) {
        const float det = Dot(a, Cross(b, c));
        const float f = det == 0.f ? 0.f : 1.f / det;
        std::array<float, 9> m{};
        std::size_t at = 0;
        for (const V row : {Cross(b, c), Cross(c, a), Cross(a, b)}) {
            for (const float element : {row.x, row.y, row.z}) m[at++] = element * f;
        }
        return m;
    }

    tav::Vector<Quilo::Triplet> Survivors() const {
        std::vector<Quilo::Triplet> survivors;
        for (const auto& [i, j, k] : triples_) {
            const Quilo::Triplet triplet{
                Inverse(speakers_[i], speakers_[j], speakers_[k]),
                {static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j),
                 static_cast<std::uint16_t>(k)}};
            const bool joined = Connected(i, j) && Connected(i, k) && Connected(j, k);
            if (joined && !AnotherInside(triplet)) survivors.push_back(triplet);
        }
        tav::Vector<Quilo::Triplet> result(survivors.size());
        std::ranges::copy(survivors, result.begin());
        return result;
    }

    const tav::CartesianArray& speakers_;
    std::size_t count_;
    std::vector<bool> connected_;
    std::vector<std::array<std::size_t, 3>> triples_;
};

}  // namespace

tav::Vector<Quilo::Triplet> Triangulate(const tav::CartesianArray& speakers) {
    return Procedure(speakers).Run();
}

void VbapGains(const tav::Vector<Quilo::Triplet>& triplets,
               const tav::CartesianVector& source,
               tav::Vector<float>& gains) {
    gains.Fill(0.f);
    float bestMinimum = -100000.f;
    std::ptrdiff_t bestNegatives = 3;
    const Quilo::Triplet* best = nullptr;
    std::array<float, 3> bestWeights{};
    for (const Quilo::Triplet& triplet : triplets) {
        const auto& m = triplet.inverse;
        const std::array<float, 3> g{Dot({m[0], m[1], m[2]}, source),
                                     Dot({m[3], m[4], m[5]}, source),
                                     Dot({m[6], m[7], m[8]}, source)};
        const auto negatives = std::ranges::count_if(g, [](float w) { return w < -0.01f; });
        const float minimum = std::ranges::min(g);
        if (minimum > bestMinimum && negatives <= bestNegatives) {
            bestMinimum = minimum;
            bestNegatives = negatives;
            best = &triplet;
            bestWeights = g;
        }
    }
    if (best == nullptr) return;
    for (std::size_t n = 0; n < 3; ++n) {
        gains[best->speakers[n]] += std::max(bestWeights[n], 0.f);
    }
}

}  // namespace Plain
