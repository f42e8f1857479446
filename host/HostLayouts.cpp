// SPDX-License-Identifier: MIT
#include "HostLayouts.h"

#include "HostConsole.h"
#include "HostFault.h"
#include "HostObject.h"
#include "audiofiles/VelkDspWavHeader.h"
#include "laws/QuiloNamedLayouts.h"

#include <algorithm>

namespace Quilo::Host {

namespace {

std::string FloatText(float number) {
    t_atom atom{};
    atom_setfloat(&atom, static_cast<double>(number));
    return HostApi::AtomText(atom);
}

/// The parser has made sure that the layout exists.
std::vector<LoudspeakerPlace> PlacesOf(std::string_view name) {
    return FindNamedLayout(name).value_or(std::vector<LoudspeakerPlace>());
}

}  // namespace

void RefuseLayoutsOfOtherSizes(const Script& script, const Object& object) {
    for (const Statement& statement : script.statements) {
        if (!statement.Says("layout")) continue;
        const std::string name = LayoutName(statement.atoms[0]);
        const std::size_t numPlaces = PlacesOf(name).size();
        if (numPlaces != object.NumSignalOutlets())
            throw ScriptFault(script.name, statement.line,
                              "host layout " + name + ": the layout has " +
                                  std::to_string(numPlaces) + " loudspeakers, the object " +
                                  std::to_string(object.NumSignalOutlets()) + " signal outlets");
    }
}

std::uint32_t ChannelMaskOf(const Script& script) {
    const auto places = [](const Statement& statement) {
        const bool isMessage = !statement.directive && !statement.atoms.empty();
        return statement.Says("layout") ||
               (isMessage && AtomSpelling(statement.atoms[0]).starts_with("speaker"));
    };
    const auto named = std::ranges::find_if(script.statements, places);
    if (named == script.statements.end() || !named->Says("layout") || named->timed) return 0;
    if (std::any_of(named + 1, script.statements.end(), places)) return 0;
    std::vector<std::string_view> labels;
    for (const LoudspeakerPlace& place : PlacesOf(LayoutName(named->atoms[0])))
        labels.push_back(place.label);
    return tav::ChannelMaskOf(labels);
}

void SendLayout(std::string_view name, Object& object, Console& console) {
    if (!object.Get()) return;
    const std::vector<LoudspeakerPlace> places = PlacesOf(name);
    std::vector<Atom> message{"speakers", "ae"};
    for (const LoudspeakerPlace& place : places) {
        message.emplace_back(static_cast<double>(place.azimuthDeg));
        message.emplace_back(static_cast<double>(place.elevationDeg));
    }
    object.Send(message);
    std::size_t output = 0;
    for (const LoudspeakerPlace& place : places)
        console.Write("layout", std::to_string(++output) + " " + std::string(place.label) + " " +
                                    FloatText(place.azimuthDeg) + " " +
                                    FloatText(place.elevationDeg));
}

}  // namespace Quilo::Host
