// SPDX-License-Identifier: MIT
// Symbols of quilo.pan~, looked up once: names of attributes that are announced when a message or
// an alias changes them, and the words that attributes answer.
#pragma once

#include "math/VelkDspKeywords.h"
#include "max/VelkMaxSymbols.h"
#include "pan/QuiloKeywords.h"

#include "ext.h"

#include <string>
#include <utility>
#include <vector>

namespace Quilo {

/// The symbol of each code's printed word.
template <class Code>
class WordSymbols {
public:
    explicit WordSymbols(const tav::KeywordTable<Code>& table) {
        for (const auto& row : table.Rows()) {
            symbols_.emplace_back(row.code, gensym(std::string(row.printed).c_str()));
        }
    }
    /// The empty symbol for a code without a row.
    t_symbol* Of(Code code) const noexcept {
        for (const auto& [known, symbol] : symbols_) {
            if (known == code) return symbol;
        }
        return none_;
    }

private:
    std::vector<std::pair<Code, t_symbol*>> symbols_;
    t_symbol* none_ = gensym("");
};

struct PanSymbols {
    static const PanSymbols& Get() { return VelkMax::SymbolsOf<PanSymbols>(); }

    t_symbol* sources = gensym("sourcespositions");
    t_symbol* speakers = gensym("speakerspositions");
    t_symbol* spread = gensym("spread");
    t_symbol* spreadXyz = gensym("spreadxyz");
    t_symbol* encoding = gensym("encoding");
    t_symbol* norm = gensym("norm");
    t_symbol* hoaMode = gensym("hoamode");
    t_symbol* listenerPosition = gensym("listenerposition");
    t_symbol* hrtfFile = gensym("hrtffile");
    t_symbol* nearfieldFile = gensym("nearfieldhrtffile");
    // Values of `hrtffile` that are no files.
    t_symbol* builtInHrtf = gensym("kemar");
    t_symbol* noHrtf = gensym("none");

    WordSymbols<Pan::Type> types{PanTypeKeywords()};
    WordSymbols<Pan::SubType> subTypes{PanSubTypeKeywords()};
    WordSymbols<Pan::SpreadingMode> spreadingModes{PanSpreadingModeKeywords()};
    WordSymbols<tav::SphericalHarmonic::Normalization> encodings{tav::NormalizationKeywords()};
    WordSymbols<tav::HoaEncodingVector::Mode> hoaModes{tav::HoaModeKeywords()};
    WordSymbols<InterauralTimeDifference::Type> itdTypes{ItdTypeKeywords()};
    WordSymbols<InterauralTimeDifference::LatencyMode> itdLatencies{ItdLatencyKeywords()};
};

}  // namespace Quilo
