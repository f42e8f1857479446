// SPDX-License-Identifier: MIT
// The engine of an object as the panner that an attribute or a message is for.
#pragma once

#include "QuiloPanObject.h"
#include "max/VelkMaxRestoring.h"
#include "text/VelkDspKeywordTable.h"

#include <optional>
#include <string>
#include <string_view>

namespace Quilo {

/// The engine as a panner of this class; null when it is of another class (see IsOf).
template <class Panner>
Panner* EngineAs(const PanObject& object) {
    return dynamic_cast<Panner*>(object.Engine());
}

/// The answer of the getter for a panner of this class; `otherwise` for any other engine.
template <class Panner, class Value>
Value Answer(const PanObject& object, Value (Panner::*get)() const, Value otherwise) {
    const auto* panner = EngineAs<Panner>(object);
    return panner != nullptr ? (panner->*get)() : otherwise;
}

/// Posts that the engine does not have a setting. Posts nothing while a stored state is restored:
/// the object's getter answers this setting, so its own state contains it.
template <class... Refusal>
void Refuse(const PanObject& object, const Refusal&... refusal) {
    if (!VelkMax::RestoringState::IsActive()) VelkMax::Error(object, refusal...);
}

/// The engine as a panner of this class; null, after posting the refusal, when it is of another.
template <class Panner, class... Refusal>
Panner* PannerOrRefusal(const PanObject& object, const Refusal&... refusal) {
    auto* const panner = EngineAs<Panner>(object);
    if (panner == nullptr) Refuse(object, refusal...);
    return panner;
}

/// The code of a word that the table accepts. A stored state may also hold words that are only
/// printed. For any other word `invalid` is posted.
template <class Code>
std::optional<Code> ReadKeyword(const PanObject& object,
                                const tav::KeywordTable<Code>& table,
                                std::string_view word,
                                const VelkMax::Text<const char*>& invalid) {
    auto code = table.Parse(word);
    if (!code && VelkMax::RestoringState::IsActive()) code = table.FindPrinted(word);
    if (!code) VelkMax::Error(object, invalid, std::string(word).c_str());
    return code;
}

}  // namespace Quilo
