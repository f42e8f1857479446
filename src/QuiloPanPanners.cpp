// SPDX-License-Identifier: MIT
#include "QuiloPanPanners.h"

#include "QuiloPanEngine.h"
#include "QuiloPanSymbols.h"
#include "math/VelkDspKeywords.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloHOAPanning.h"
#include "pan/QuiloHoaDiffusePanning.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloNFCHOAPanning.h"
#include "pan/QuiloRecursivePanning.h"
#include "pan/QuiloSubwoofersPanning.h"

#include <algorithm>
#include <memory>

namespace Quilo {

using VelkMax::Error;

namespace {

template <class... Panners>
bool IsOneOf(const PanObject& object) {
    return (... || (EngineAs<Panners>(object) != nullptr));
}

template <class Panner>
Panner* PannerOf(const PanObject& object, const char* handler) {
    return PannerOrRefusal<Panner>(object, kNoPanner, handler);
}

}  // namespace

bool IsOf(const Pan& engine, Family family) {
    using Type = Pan::Type;
    const auto isAnyOf = [type = engine.GetType()](auto... types) {
        return (... || (type == types));
    };
    switch (family) {
        case Family::Binaural: return isAnyOf(Type::Binaural);
        case Family::Dbap: return isAnyOf(Type::Dbap, Type::Dbap3D);
        case Family::Hoa: return isAnyOf(Type::Hoa2D, Type::Hoa3D, Type::Nfchoa2D, Type::Nfchoa3D);
        case Family::Knn: return isAnyOf(Type::Knn);
        case Family::NfcHoa: return isAnyOf(Type::Nfchoa2D, Type::Nfchoa3D);
        case Family::Nearfield:
            return isAnyOf(Type::Binaural) && engine.GetSubType() == Pan::SubType::Nearfield;
        case Family::Panr: return isAnyOf(Type::Panr);
        case Family::Snowman:
            return isAnyOf(Type::Binaural) && engine.GetSubType() == Pan::SubType::SnowmanModel;
        case Family::Spreading: return engine.SupportsSpread();
        case Family::Subwoofers: return isAnyOf(Type::Subwoofers);
    }
    return false;
}

bool IsOf(const PanObject& object, Family family) {
    return object.Engine() != nullptr && IsOf(*object.Engine(), family);
}

// ---- Distance-based panners

t_symbol* SpreadMode(const PanObject& object) {
    const auto mode = Answer(object, &DbapPanning::GetSpreadingMode, Pan::SpreadingMode::Omni);
    return PanSymbols::Get().spreadingModes.Of(mode);
}

void SetSpreadMode(PanObject& object, std::string_view mode) {
    auto* const dbap = PannerOrRefusal<DbapPanning>(object, kOnlyDbap);
    if (dbap == nullptr) return;
    const auto code = ReadKeyword(object, PanSpreadingModeKeywords(), mode, kInvalidSpreadMode);
    if (code) dbap->SetSpreadingMode(*code);
}

max_long MuteOutside(const PanObject& object) {
    return Answer(object, &DbapPanning::MuteOutside, false) ? 1 : 0;
}

void SetMuteOutside(PanObject& object, max_long on) {
    auto* const dbap = PannerOrRefusal<DbapPanning>(object, kOnlyDbap);
    if (dbap != nullptr) dbap->SetMuteOutside(on != 0);
}

std::span<const float> SpreadXyz(const PanObject& object) {
    const auto* dbap = EngineAs<DbapPanning>(object);
    const std::span<float> values = object.PerSourceValues(3);
    std::ranges::fill(values, 0.f);
    for (unsigned index = 0; dbap != nullptr && index < values.size() / 3; ++index) {
        std::ranges::copy(dbap->SourceSpreadByDirection(index),
                          values.subspan(std::size_t{3} * index).begin());
    }
    return values;
}

void SetSpreadXyz(PanObject& object, const std::vector<float>& values) {
    auto* const dbap = PannerOrRefusal<DbapPanning>(object, kOnlyDbap);
    if (dbap == nullptr) return;
    const std::span<const float> before = SpreadXyz(object);
    std::vector<float> all(before.begin(), before.end());
    std::copy_n(values.begin(), std::min(values.size(), all.size()), all.begin());
    for (unsigned index = 0; index < all.size() / 3; ++index) {
        dbap->SetSpreadByDirection(index, std::span(all).subspan(std::size_t{3} * index, 3));
    }
}

bool SetSourceSpreadXyz(PanObject& object, unsigned index, std::span<const float> xyz) {
    auto* const dbap = EngineAs<DbapPanning>(object);
    if (dbap == nullptr) return false;
    dbap->SetSpreadByDirection(index, xyz);
    object.TheDoor().Changed(PanSymbols::Get().spreadXyz);
    return true;
}

// ---- Ambisonic panners

t_symbol* Encoding(const PanObject& object) {
    using tav::SphericalHarmonic;
    const Pan* engine = object.Engine();
    const auto code =
        engine != nullptr ? engine->GetNormalization() : SphericalHarmonic::Normalization::SN3D;
    return PanSymbols::Get().encodings.Of(code);
}

namespace {

/// A normalisation or mode, for which a table may have to be computed. It is in force once that is
/// there, unless another one was asked for meanwhile.
class EncodingWork : public VelkMax::LongWork {
public:
    /// @param latest  counts what is asked for of this kind
    EncodingWork(PanObject& object, unsigned& latest)
        : object_(object),
          latest_(latest),
          number_(++latest) {}

    void Finish() override {
        if (number_ == latest_) Set();
    }

protected:
    virtual void Set() = 0;
    Pan& Engine() const { return *object_.Engine(); }

    PanObject& object_;
    std::shared_ptr<const void> table_;  // kept until it is in use

private:
    unsigned& latest_;
    const unsigned number_;
};

class NormalizationWork final : public EncodingWork {
public:
    NormalizationWork(PanObject& object, tav::SphericalHarmonic::Normalization normalization)
        : EncodingWork(object, object.Encodings().normalization),
          normalization_(normalization) {}

    void Compute() override {
        table_ = Engine().MakeEncodingTable(Engine().GetComputationMode(), normalization_);
    }

private:
    void Set() override {
        Engine().SetNormalization(normalization_);
        // Two attributes have this value; Max announces only the one that it set.
        object_.TheDoor().Changed(PanSymbols::Get().encoding);
        object_.TheDoor().Changed(PanSymbols::Get().norm);
    }

    const tav::SphericalHarmonic::Normalization normalization_;
};

class HoaModeWork final : public EncodingWork {
public:
    HoaModeWork(PanObject& object, tav::HoaEncodingVector::Mode mode)
        : EncodingWork(object, object.Encodings().mode),
          mode_(mode) {}

    void Compute() override {
        table_ = Engine().MakeEncodingTable(mode_, Engine().GetNormalization());
    }

private:
    void Set() override {
        Engine().SetComputationMode(mode_);
        // Of an errand Max has announced it before it was in force.
        object_.TheDoor().Changed(PanSymbols::Get().hoaMode);
    }

    const tav::HoaEncodingVector::Mode mode_;
};

}  // namespace

void SetEncoding(PanObject& object, std::string_view encoding) {
    if (!IsOneOf<HOAPanning, NFCHOAPanning, HoaDiffusePanning>(object)) {
        return Refuse(object, kOnlyHoa, "encoding");
    }
    const auto code = ReadKeyword(object, tav::NormalizationKeywords(), encoding, kInvalidEncoding);
    if (code) object.TheDoor().CarryOut(std::make_unique<NormalizationWork>(object, *code));
}

t_symbol* HoaMode(const PanObject& object) {
    using Mode = tav::HoaEncodingVector::Mode;
    const Pan* engine = object.Engine();
    const Mode mode = engine != nullptr ? engine->GetComputationMode() : Mode::Precise;
    return PanSymbols::Get().hoaModes.Of(mode);
}

void SetHoaMode(PanObject& object, std::string_view mode) {
    if (!IsOneOf<HOAPanning, NFCHOAPanning>(object)) return Refuse(object, kOnlyHoa, "hoamode");
    const auto code = ReadKeyword(object, tav::HoaModeKeywords(), mode, kInvalidHoaMode);
    if (code) object.TheDoor().CarryOut(std::make_unique<HoaModeWork>(object, *code));
}

max_long NfcHighPass(const PanObject& object) {
    return Answer(object, &NFCHOAPanning::HighPass, false) ? 1 : 0;
}

void SetNfcHighPass(PanObject& object, max_long on) {
    if (!IsOf(object, Family::NfcHoa)) return Error(object, kOnlyHoa, "nfchighpass");
    auto* const nfc = PannerOf<NFCHOAPanning>(object, "quilo_pan_update_nfchighpass");
    if (nfc != nullptr) nfc->SetHighPass(on != 0);
}

float SpeakersRadius(const PanObject& object) {
    return Answer(object, &NFCHOAPanning::SpeakersRadius, 1.f);
}

void SetSpeakersRadius(PanObject& object, float metres) {
    if (!IsOf(object, Family::NfcHoa)) return Error(object, kOnlyHoa, "speakersradius");
    auto* const nfc = PannerOf<NFCHOAPanning>(object, "quilo_pan_update_nfcradius");
    if (nfc != nullptr) nfc->SetSpeakersRadius(metres);
}

// ---- Subwoofers

float Cutoff(const PanObject& object) {
    return Answer(object, &SubwoofersPanning::Cutoff, SubwoofersPanning::kDefaultCutoffHz);
}

void SetCutoff(PanObject& object, float hz) {
    if (!IsOf(object, Family::Subwoofers)) return Error(object, kOnlySubwoofers, "cutoff");
    auto* const subwoofers = PannerOf<SubwoofersPanning>(object, "quilo_pan_update_subwoofers");
    if (subwoofers != nullptr) subwoofers->SetCutoff(hz);
}

// ---- The recursive panner

void SetCorners(PanObject& object, std::span<const float> azimuthsDeg) {
    auto* const panr = PannerOf<RecursivePanning>(object, "quilo_pan_corners");
    if (panr != nullptr) panr->SetCorners(azimuthsDeg);
}

}  // namespace Quilo
