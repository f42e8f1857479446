// SPDX-License-Identifier: MIT
#include "HostAdvice.h"

#include "HostNearestWord.h"
#include "HostObject.h"
#include "HostScratch.h"
#include "math/VelkDspCoordinates.h"
#include "math/VelkDspKeywords.h"

#include <algorithm>
#include <cmath>

namespace Quilo::Host {

namespace {

bool IsWord(const Atom& atom) { return std::holds_alternative<std::string>(atom); }

std::string NumberText(double number) {
    return number == std::floor(number) ? std::to_string(static_cast<std::int64_t>(number))
                                        : AtomSpelling(Atom(number));
}

/// A message that sets one position, by its number, or all positions.
struct PositionMessage {
    std::string_view selector;
    std::string_view things;
    bool isNumbered;
    std::size_t (Object::*count)() const;
};
constexpr PositionMessage kPositionMessages[] = {
    {"source", "sources", true, &Object::NumSignalInlets},
    {"speaker", "loudspeakers", true, &Object::NumSignalOutlets},
    {"loudspeaker", "loudspeakers", true, &Object::NumSignalOutlets},
    {"speakers", "loudspeakers", false, &Object::NumSignalOutlets},
    {"loudspeakers", "loudspeakers", false, &Object::NumSignalOutlets},
};

const PositionMessage* FindPositionMessage(const std::string& selector) {
    const auto* row = std::ranges::find(kPositionMessages, selector, &PositionMessage::selector);
    return row == std::end(kPositionMessages) ? nullptr : row;
}

std::vector<std::string> FormatKeywords() {
    std::vector<std::string> keywords;
    using Format = tav::Coordinates::Format;
    keywords.reserve(static_cast<std::size_t>(Format::None));
    for (int code = 0; code < static_cast<int>(Format::None); ++code)
        keywords.emplace_back(tav::Coordinates::FormatText(static_cast<Format>(code)));
    return keywords;
}

/// The keywords that a help text names: `<m>aed</m>`, but no whole example.
std::vector<std::string> KeywordsOf(std::string_view help) {
    std::vector<std::string> keywords;
    for (std::size_t at = help.find("<m>"); at != std::string_view::npos;
         at = help.find("<m>", at)) {
        at += 3;
        const std::vector<std::string> words = WordsOf(help.substr(at, help.find("</m>", at) - at));
        if (words.size() == 1) keywords.push_back(words[0]);
    }
    return keywords;
}

/// The dictionary in which a class keeps the help of its messages; null when it has none.
t_dictionary* HelpOf(const Object& object) {
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(object.Get()))
        for (const HostApi::PropertyInfo& property : attribute.properties)
            if (property.name == gensym("methods") && property.values.size() == 1)
                return static_cast<t_dictionary*>(atom_getobj(property.values.data()));
    return nullptr;
}

std::vector<std::string> HelpKeywords(t_dictionary* help, t_symbol* message) {
    max_long count = 0;
    t_atom* atoms = nullptr;
    std::vector<std::string> keywords;
    if (!help || dictionary_getatoms(help, message, &count, &atoms) != MAX_ERR_NONE)
        return keywords;
    for (max_long k = 0; k < count; ++k)
        if (atom_gettype(atoms + k) == A_SYM)
            for (std::string& word : KeywordsOf(atom_getsym(atoms + k)->s_name))
                keywords.push_back(std::move(word));
    return keywords;
}

/// "1, 4, 9" or "3 to 250".
std::string CountsText(const std::vector<unsigned>& counts) {
    std::string text;
    for (std::size_t first = 0; first < counts.size();) {
        std::size_t last = first;
        while (last + 1 < counts.size() && counts[last + 1] == counts[last] + 1) ++last;
        if (last == first + 1) last = first;  // "3, 4", not "3 to 4"
        text += (text.empty() ? "" : ", ") + std::to_string(counts[first]);
        if (last > first) text += " to " + std::to_string(counts[last]);
        first = last + 1;
    }
    return text;
}

/// For which numbers of outlets an object of this box is not silent. Only the object knows, so it
/// is made with each of them.
std::vector<unsigned> OutletCounts(std::vector<Atom> box, unsigned most) {
    std::vector<unsigned> counts;
    box.resize(std::min<std::size_t>(box.size(), 5));
    box.insert(box.end(), std::string("@speakerspositions"));
    for (unsigned count = 1; count <= most; ++count) {
        box[2] = static_cast<std::int64_t>(count);
        // All loudspeakers at one place: only silence is tested, and triangulating a dome of 250 is
        // slow.
        box.insert(box.end(), {0.0, 1.0, 0.0});
        const Scratch trial(box);
        if (trial.IsMade() && trial.Made().AttributeText("type") != "null") counts.push_back(count);
    }
    return counts;
}

/// Attributes that are fixed once the object is made.
constexpr std::string_view kStructure[] = {"numinputs", "numoutputs", "type", "subtype"};

const char* KindName(int code) {
    switch (code) {
        case A_LONG:
        case A_DEFLONG: return "whole number";
        case A_FLOAT:
        case A_DEFFLOAT: return "number";
        case A_SYM:
        case A_DEFSYM: return "word";
        default: return nullptr;
    }
}

/// The types as words; "" for a message that takes any arguments.
std::string KindsText(const std::vector<int>& types) {
    std::string text;
    for (const int type : types) {
        const char* const kind = KindName(type);
        if (!kind) return "";
        text += (text.empty() ? "a " : ", a ") + std::string(kind);
    }
    return text.empty() ? "nothing" : text;
}

}  // namespace

Advice::Advice(const Object& object) : object_(object) {
    if (!object.Get()) return;
    TakeAttributes();
    TakeMessages();
}

void Advice::TakeAttributes() {
    for (const HostApi::AttributeInfo& info : HostApi::Attributes(object_.Get())) {
        if (object_attr_usercanset(object_.Get(), info.name) == 0) continue;
        Attribute& attribute = attributes_[info.name->s_name];
        for (const HostApi::PropertyInfo& property : info.properties) {
            if (property.values.empty()) continue;
            const std::string_view name = property.name->s_name;
            const t_atom* value = property.values.data();
            if (name == "min") attribute.least = atom_getfloat(value);
            if (name == "max") attribute.most = atom_getfloat(value);
            if (name == "units") attribute.units = atom_getsym(value)->s_name;
            if (name == "enumvals")
                for (const t_atom& atom : property.values)
                    for (const std::string& word : WordsOf(atom_getsym(&atom)->s_name))
                        attribute.words.push_back(word);
        }
    }
}

void Advice::TakeMessages() {
    t_dictionary* const help = HelpOf(object_);
    for (const HostApi::MessageInfo& info : HostApi::Messages(object_class(object_.Get())))
        if (info.types.empty() || info.types[0] != A_CANT)
            messages_[info.name->s_name] = {KindsText(info.types), HelpKeywords(help, info.name)};
}

std::string Advice::OfMessage(std::span<const Atom> message) const {
    if (message.empty() || !IsWord(message[0])) return "";
    const std::string& selector = std::get<std::string>(message[0]);
    if (attributes_.contains(selector)) return OfAttribute(selector, message.subspan(1));
    const auto known = messages_.find(selector);
    if (known == messages_.end()) return OfSelector(selector);
    if (FindPositionMessage(selector)) return OfPosition(message);
    return known->second.kinds.empty() ? "" : selector + " takes " + known->second.kinds;
}

std::string Advice::OfClippedValues(std::span<const Atom> message) const {
    if (message.size() < 2 || !IsWord(message[0])) return "";
    const std::string& selector = std::get<std::string>(message[0]);
    if (attributes_.contains(selector)) return OfRange(selector, message.subspan(1));
    // A property of one source has the range of the attribute that holds it for all sources.
    const bool isProperty = selector == "source" && message.size() > 3 && IsWord(message[2]);
    return isProperty ? OfRange(std::get<std::string>(message[2]), message.subspan(3)) : "";
}

std::string Advice::OfSelector(const std::string& selector) const {
    std::vector<std::string> words;
    words.reserve(attributes_.size() + messages_.size());
    const std::string get = selector.starts_with("get") ? "get" : "";
    for (const auto& [name, attribute] : attributes_) words.push_back(get + name);
    for (const auto& [name, message] : messages_) words.push_back(name);
    const std::string nearest = NearestWord(selector, words);
    return nearest.empty() ? "" : "did you mean " + nearest + "?";
}

std::string Advice::OfAttribute(const std::string& name, std::span<const Atom> values) const {
    const Attribute& attribute = attributes_.at(name);
    if (std::ranges::find(kStructure, name) != std::end(kStructure))
        return name + " is given in the box and stays";
    if (!attribute.words.empty()) {
        const std::string word = values.empty() ? "" : AtomSpelling(values[0]);
        const bool isKnown = std::ranges::find(attribute.words, word) != attribute.words.end() ||
                             tav::NormalizationKeywords().Parse(word);  // also words not offered
        return isKnown ? "" : SuggestionText(word, attribute.words);
    }
    return OfRange(name, values);
}

std::string Advice::OfRange(const std::string& name, std::span<const Atom> values) const {
    const auto found = attributes_.find(name);
    if (found == attributes_.end()) return "";
    const auto& [least, most, words, units] = found->second;
    const bool isInside = std::ranges::all_of(values, [&](const Atom& value) {
        return !IsWord(value) && !(least && AtomNumber(value) < *least) &&
               !(most && AtomNumber(value) > *most);
    });
    if (isInside || (!least && !most)) return "";
    const std::string from = least ? NumberText(*least) : "any number";
    const std::string to = most ? " to " + NumberText(*most) : " or more";
    return name + " takes " + from + to + (units.empty() ? "" : " " + units);
}

std::string Advice::OfPosition(std::span<const Atom> message) const {
    const std::string& selector = std::get<std::string>(message[0]);
    const PositionMessage& row = *FindPositionMessage(selector);
    const std::size_t count = (object_.*row.count)();
    if (!row.isNumbered) return OfFormat(selector, message.subspan(1));
    const auto* number = message.size() > 1 ? std::get_if<std::int64_t>(&message[1]) : nullptr;
    if (!number || *number < 1 || static_cast<std::size_t>(*number) > count)
        return std::string(row.things) + " are numbered from 1 to " + std::to_string(count);
    return OfFormat(selector, message.subspan(2));
}

std::string Advice::OfFormat(const std::string& selector, std::span<const Atom> words) const {
    const std::vector<std::string> formats = FormatKeywords();
    if (words.empty() || !IsWord(words[0]))
        return "a coordinate format comes first, " + ListText(formats);
    const std::string& word = std::get<std::string>(words[0]);
    const auto format = tav::Coordinates::ParseFormat(word);
    const std::vector<std::string>& others = messages_.at(selector).words;
    if (!format) {
        if (std::ranges::find(others, word) != others.end()) return OfRange(word, words.subspan(1));
        std::vector<std::string> known = formats;
        if (selector == "source") known.insert(known.end(), others.begin(), others.end());
        std::ranges::sort(known);
        known.erase(std::ranges::unique(known).begin(), known.end());
        return SuggestionText(word, known);
    }
    const std::size_t numValues = tav::Coordinates::NumValues(*format);
    const PositionMessage& row = *FindPositionMessage(selector);
    const std::size_t numThings = row.isNumbered ? 1 : (object_.*row.count)();
    if (words.size() - 1 == numValues * numThings) return "";
    std::string text =
        word + " takes " + std::to_string(numValues) + (numValues == 1 ? " value" : " values");
    if (numThings > 1)
        text += " for each of the " + std::to_string(numThings) + " " + std::string(row.things) +
                ", " + std::to_string(numValues * numThings) + " in all";
    return text;
}

std::vector<std::string> Advice::OfBox(std::span<const Atom> box,
                                       bool hasComplained,
                                       bool mayTry) const {
    std::vector<std::string> advice;
    const auto take = [&](std::string text) {
        if (!text.empty()) advice.push_back(std::move(text));
    };
    const auto isOption = [](const Atom& atom) {
        return IsWord(atom) && std::get<std::string>(atom).starts_with('@');
    };
    const auto options = std::ranges::find_if(box, isOption);
    const auto numPlain = static_cast<std::size_t>(options - box.begin());
    const std::span<const Atom> plain = box.first(numPlain);
    for (std::size_t k = 1; k < std::min<std::size_t>(plain.size(), 3); ++k)
        take(OfRange(k == 1 ? "numinputs" : "numoutputs", plain.subspan(k, 1)));
    if (mayTry && hasComplained && object_.AttributeText("type") == "null")
        take(OfType(plain, box));
    if (plain.size() > 4) take(OfSubType(AtomSpelling(plain[4])));
    for (std::size_t k = numPlain; k < box.size();) {
        std::size_t end = k + 1;
        while (end < box.size() && !isOption(box[end])) ++end;
        std::vector<Atom> message(box.begin() + static_cast<std::ptrdiff_t>(k),
                                  box.begin() + static_cast<std::ptrdiff_t>(end));
        const std::string name = std::get<std::string>(message[0]).substr(1);
        message[0] = name;
        if (name == "subtype" && message.size() > 1)
            take(OfSubType(AtomSpelling(message[1])));
        else if (name != "type" && attributes_.contains(name))
            take(hasComplained ? OfMessage(message) : OfClippedValues(message));
        else if (name != "type" && hasComplained)
            take(OfSelector(name));
        k = end;
    }
    return advice;
}

std::string Advice::OfSubType(const std::string& word) const {
    const std::vector<std::string>& words = attributes_.at("subtype").words;
    if (word == object_.AttributeText("subtype") || std::ranges::find(words, word) != words.end())
        return "";
    const std::string unknown = "unknown subtype " + word + ": ";
    const std::vector<std::string>& types = attributes_.at("type").words;
    const std::string joined = object_.AttributeText("type") + word;
    if (std::ranges::find(types, joined) != types.end())
        return unknown + "did you mean the type " + joined + "?";
    return unknown + SuggestionText(word, words);
}

std::string Advice::OfType(std::span<const Atom> plain, std::span<const Atom> box) const {
    std::vector<Atom> trial(plain.begin(), plain.end());
    if (trial.size() < 3) return "";
    const auto option = std::ranges::find(box, Atom(std::string("@type")));
    if (option != box.end() && option + 1 != box.end()) {
        trial.resize(std::max<std::size_t>(trial.size(), 4));
        trial[3] = option[1];
    }
    if (trial.size() < 4) return "";
    const std::string word = AtomSpelling(trial[3]);
    const auto most = static_cast<unsigned>(attributes_.at("numoutputs").most.value_or(1));
    const std::string takes = " takes these numbers of outlets: ";
    std::vector<unsigned> counts = OutletCounts(trial, most);
    if (!counts.empty()) return word + takes + CountsText(counts);
    const std::vector<std::string>& words = attributes_.at("type").words;
    if (std::ranges::find(words, word) == words.end()) return SuggestionText(word, words);
    // A subtype may ask for more inlets.
    constexpr std::int64_t kMostInlets = 3;
    auto inlets = static_cast<std::int64_t>(AtomNumber(trial[1]));
    while (counts.empty() && inlets < kMostInlets) {
        trial[1] = ++inlets;
        counts = OutletCounts(trial, most);
    }
    if (counts.empty()) return word + " is silent with any number of outlets";
    return word + " with " + std::to_string(inlets) + " inlets" + takes + CountsText(counts);
}

}  // namespace Quilo::Host
