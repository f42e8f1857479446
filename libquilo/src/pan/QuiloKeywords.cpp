// SPDX-License-Identifier: MIT
#include "pan/QuiloKeywords.h"

namespace Quilo {

// clang-format off

const tav::KeywordTable<Pan::Type>& PanTypeKeywords() {
    static const tav::KeywordTable<Pan::Type> table{
        // code                  printed       accepted
        {Pan::Type::Binaural,    "binaural",   {"binaural"}},
        {Pan::Type::Xy,          "xy",         {"xy"}},
        {Pan::Type::Ms,          "ms",         {"ms"}},
        {Pan::Type::Ab,          "ab",         {"ab"}},
        {Pan::Type::Surround,    "surround",   {"surround"}},
        {Pan::Type::Panr,        "panr",       {"panr"}},
        {Pan::Type::Angular,     "angular",    {"angular"}},
        {Pan::Type::Vbap2D,      "vbap2d",     {"vbap2d"}},
        {Pan::Type::Vbip2D,      "vbip2d",     {"vbip2d"}},
        {Pan::Type::Vbap,        "vbap",       {"vbap", "vbap3d"}},
        {Pan::Type::Vbip,        "vbip",       {"vbip", "vbip3d"}},
        {Pan::Type::Dbap,        "dbap",       {"dbap", "dbap2d"}},
        {Pan::Type::Dbap3D,      "dbap3d",     {"dbap3d"}},
        {Pan::Type::Bformat,     "bformat",    {"bformat", "b-format"}},
        {Pan::Type::Hoa2D,       "hoa2d",      {"hoa2d"}},
        {Pan::Type::Hoa3D,       "hoa3d",      {"hoa3d", "hoa", "ambisonic"}},
        {Pan::Type::Vdbap,       "vdbap",      {"vdbap"}},
        {Pan::Type::Nfchoa2D,    "nfchoa2d",   {"nfchoa2d"}},
        {Pan::Type::Nfchoa3D,    "nfchoa3d",   {"nfchoa3d", "nfchoa3D", "nfchoa", "nfc-hoa"}},
        {Pan::Type::Spcap,       "spcap",      {"spcap"}},
        {Pan::Type::Knn,         "knn",        {"knn"}},
        {Pan::Type::Subwoofers,  "subwoofers", {"subwoofers", "subwoofer", "lfe"}},
        {Pan::Type::Null,        "null",       {}},  // Deliberate: printed, never accepted
    };
    return table;
}

const tav::KeywordTable<Pan::SubType>& PanSubTypeKeywords() {
    static const tav::KeywordTable<Pan::SubType> table{
        // code                             printed               accepted
        {Pan::SubType::Direct,              "direct",             {"direct"}},
        {Pan::SubType::Early,               "early",              {"early"}},
        {Pan::SubType::Diffuse,             "diffuse",            {"diffuse"}},
        {Pan::SubType::Nearfield,           "nearfield",          {"nearfield"}},
        {Pan::SubType::SphericalHeadModel,  "sphericalheadmodel", {"sphericalheadmodel"}},
        {Pan::SubType::SnowmanModel,        "snowmanmodel",       {"snowmanmodel", "snowman"}},
        {Pan::SubType::Continuous,          "continuous",         {"continuous"}},
        {Pan::SubType::Null,                "null",               {}},  // Deliberate: never accepted
    };
    return table;
}

const tav::KeywordTable<Pan::SpreadingMode>& PanSpreadingModeKeywords() {
    static const tav::KeywordTable<Pan::SpreadingMode> table{
        // code                             printed        accepted
        {Pan::SpreadingMode::Omni,          "omni",        {"omni"}},
        {Pan::SpreadingMode::Directional,   "directional", {"directional", "xyz"}},
    };
    return table;
}

const tav::KeywordTable<InterauralTimeDifference::Type>& ItdTypeKeywords() {
    using Type = InterauralTimeDifference::Type;
    static const tav::KeywordTable<Type> table{
        // code               printed        accepted
        {Type::Basic,         "basic",       {"basic", "BasicModel", "SphericalHeadBasicModel"}},
        {Type::Woodworth,     "woodworth",   {"woodworth", "WoodworthModel", "SphericalHeadWoodworthModel"}},
        {Type::Measurement,   "measurement", {"measurement", "ITDFromMeasurement"}},
        // Deliberate: printed and accepted differ in two rows.   (ItdKeywords, PrintAndParseApart)
        {Type::LarcherJot,    "larchetjot",  {"larcherjot", "LarcherJotModel", "Woodworth3d", "woodworth3d", "woodworth3D"}},
        {Type::Savioja,       "savioja",     {"savioja", "SaviojaModel"}},
        {Type::Miller,        "miller",      {"miller", "MillerModel"}},
        {Type::None,          "none",        {"NoITD"}},
    };
    return table;
}

const tav::KeywordTable<InterauralTimeDifference::LatencyMode>& ItdLatencyKeywords() {
    using Mode = InterauralTimeDifference::LatencyMode;
    static const tav::KeywordTable<Mode> table{
        // code               printed         accepted
        {Mode::FixedLatency,  "fixedlatency", {"fixedlatency"}},
        {Mode::NoLatency,     "nolatency",    {"nolatency"}},
    };
    return table;
}

const tav::KeywordTable<tav::FadeShape>& FadeShapeKeywords() {
    static const tav::KeywordTable<tav::FadeShape> table{
        // code                          printed         accepted
        {tav::FadeShape::Linear,         "linear",       {"linear"}},
        {tav::FadeShape::Cosine,         "cosine",       {"cosine"}},
        {tav::FadeShape::SquareCosine,   "squareCosine", {"squareCosine"}},
    };
    return table;
}

const tav::KeywordTable<HrtfRealisation>& HrtfRealisationKeywords() {
    static const tav::KeywordTable<HrtfRealisation> table{
        // code                     printed    accepted
        {HrtfRealisation::Auto,     "auto",    {"auto"}},
        {HrtfRealisation::Cells,    "cells",   {"cells"}},
        {HrtfRealisation::Fir,      "fir",     {"fir"}},
    };
    return table;
}

// clang-format on

}  // namespace Quilo
