// SPDX-License-Identifier: MIT
#include "HostObject.h"

#include "HostAudioBridge.h"
#include "HostConsole.h"
#include "HostFault.h"
#include "HostOutputFile.h"
#include "HostPlatform.h"

#include "ext.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Quilo::Host {

namespace {

t_atom ApiAtom(const Atom& atom) {
    t_atom made{};
    if (const auto* symbol = std::get_if<std::string>(&atom))
        atom_setsym(&made, gensym(symbol->c_str()));
    else if (const auto* whole = std::get_if<std::int64_t>(&atom))
        atom_setlong(&made, *whole);
    else
        atom_setfloat(&made, std::get<double>(atom));
    return made;
}

/// The values as one word of a line: several are put in quotation marks.
std::string PropertyText(const std::vector<t_atom>& values) {
    if (values.size() == 1) return HostApi::AtomText(values.front());
    t_atom whole{};
    atom_setsym(&whole, gensym(HostApi::AtomText(values).c_str()));
    return HostApi::AtomText(whole);
}

const char* TypeName(int code) {
    struct Row {
        int code;
        const char* name;
    };
    static constexpr std::array kRows{Row{A_LONG, "long"},        Row{A_FLOAT, "float"},
                                      Row{A_SYM, "symbol"},       Row{A_OBJ, "object"},
                                      Row{A_DEFLONG, "deflong"},  Row{A_DEFFLOAT, "deffloat"},
                                      Row{A_DEFSYM, "defsymbol"}, Row{A_GIMME, "gimme"},
                                      Row{A_CANT, "cant"},        Row{A_GIMMEBACK, "gimmeback"}};
    const auto* row = std::ranges::find(kRows, code, &Row::code);
    return row == kRows.end() ? "deferred" : row->name;
}

/// Calls the object's `assist` for each inlet or each outlet.
void PrintEnds(t_object* object, max_long side, std::size_t count, Console& console) {
    using Assist = void (*)(t_object*, void* box, max_long io, max_long index, char* text);
    // Cast through void (*)(), since compilers warn of a direct cast between function types.
    const auto assist = reinterpret_cast<Assist>(
        reinterpret_cast<void (*)()>(object_getmethod(object, gensym("assist"))));
    if (!assist) return;
    for (std::size_t k = 0; k < count; ++k) {
        std::array<char, 512> text{};
        assist(object, nullptr, side, static_cast<max_long>(k), text.data());
        text.back() = '\0';
        console.Write((side == ASSIST_INLET ? "inlet " : "outlet ") + std::to_string(k + 1),
                      text.data());
    }
}

}  // namespace

std::vector<t_atom> ApiAtoms(std::span<const Atom> atoms) {
    std::vector<t_atom> made;
    for (const Atom& atom : atoms) made.push_back(ApiAtom(atom));
    return made;
}

void LoadModule(const std::string& file) {
    const std::filesystem::path path =
        file.empty() ? ProgramFolder() / ModuleFileName("quilo.pan~") : PathOf(file);
    const SharedLibrary library(path);
    WatchModule(library);
    HostApi::SetModuleFolder(path.parent_path());
    if (const auto entry = library.Find("ext_main"))
        return reinterpret_cast<void (*)(void*)>(entry)(nullptr);
    const auto entry = library.Find("main");
    if (!entry) throw Fault(ExitStatus::HostFailed, path.string() + ": the module has no entry");
    reinterpret_cast<int (*)(void*)>(entry)(nullptr);
}

void RunDueWork() {
    HostApi::AdvanceClocks(0);
    HostApi::Settle();
}

void Object::Make(std::span<const Atom> box) {
    std::vector<t_atom> atoms = ApiAtoms(box);
    t_symbol* name = atom_getsym(atoms.data());
    if (!class_findbyname(gensym("box"), name))
        throw StatementFault("the module has no class '" + std::string(name->s_name) + "'");
    object_ = static_cast<t_object*>(object_new_typed(
        gensym("box"), name, static_cast<max_long>(atoms.size() - 1), atoms.data() + 1));
    if (!object_) throw StatementFault("the object could not be made", ExitStatus::HostFailed);
    numSignalInlets_ = HostApi::SignalInlets(object_);
    numSignalOutlets_ = HostApi::SignalOutlets(object_);
}

void Object::Send(std::span<const Atom> message) {
    if (!object_) return;
    const std::vector<t_atom> atoms = ApiAtoms(message);
    if (std::holds_alternative<std::string>(message.front())) {
        HostApi::DeliverMessage(object_, 0, atom_getsym(atoms.data()), std::span(atoms).subspan(1));
        return;
    }
    const bool isWhole = std::holds_alternative<std::int64_t>(message.front());
    const char* selector = atoms.size() > 1 ? "list" : isWhole ? "int" : "float";
    HostApi::DeliverMessage(object_, 0, gensym(selector), atoms);
}

void Object::Free() {
    if (object_) object_free(object_);
    object_ = nullptr;
}

std::vector<float> Object::AttributeNumbers(std::string_view name) const {
    std::vector<float> numbers;
    if (!object_) return numbers;
    for (const t_atom& atom : HostApi::AttributeValue(object_, name))
        numbers.push_back(static_cast<float>(atom_getfloat(&atom)));
    return numbers;
}

std::string Object::AttributeText(std::string_view name) const {
    if (!object_) return "";
    const std::vector<t_atom> value = HostApi::AttributeValue(object_, name);
    return value.empty() ? "" : atom_getsym(&value.front())->s_name;
}

void Object::PrintAttributes(Console& console) const {
    if (!object_) return;
    for (const HostApi::AttributeInfo& attribute : HostApi::Attributes(object_)) {
        std::string text;
        for (const HostApi::PropertyInfo& property : attribute.properties)
            text += (text.empty() ? "" : " ") + std::string(property.name->s_name) + "=" +
                    PropertyText(property.values);
        console.Write("attribute " + std::string(attribute.name->s_name), text);
    }
}

void Object::PrintAssistance(Console& console) const {
    if (!object_) return;
    PrintEnds(object_, ASSIST_INLET, HostApi::InletTypes(object_).size(), console);
    PrintEnds(object_, ASSIST_OUTLET, HostApi::OutletTypes(object_).size(), console);
}

void Object::PrintMethods(Console& console) const {
    if (!object_) return;
    for (const HostApi::MessageInfo& message : HostApi::Messages(object_class(object_))) {
        std::string text;
        for (const int code : message.types)
            text += (text.empty() ? "" : " ") + std::string(TypeName(code));
        console.Write("method " + std::string(message.name->s_name), text);
    }
}

void Object::PrintCarriedFiles(Console& console) const {
    if (!object_) return;
    for (const HostApi::CarriedFile& file : HostApi::CarriedFiles(object_))
        console.Write(file.isInSupportFolder ? "support file" : "collective file", file.name);
}

}  // namespace Quilo::Host
