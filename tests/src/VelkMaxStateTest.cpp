// SPDX-License-Identifier: MIT
// Attributes that answer wrongly, calls that fail: one line says so, the rest is done all the same.
#include "max/VelkMaxDictionaries.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxReference.h"
#include "src/ToyBox.h"

#include <gtest/gtest.h>

#include <algorithm>

using Tests::ToyBox;

namespace {

using Step = std::function<void(ToyBox&)>;

struct Failure {
    const char* name;
    Step prepare;
    Step act;
    std::vector<std::string> lines;  // among those that come
};
std::ostream& operator<<(std::ostream& out, const Failure& failure) { return out << failure.name; }

// ---- What can be wrong with an attribute

Step Property(const char* property, const char* type, const char* text) {
    return [=](ToyBox& box) { box.AddProperty(property, type, text); };
}
Step UnreadableProperty(const char* property) {
    return [=](ToyBox& box) { box.AddUnreadableProperty(property); };
}

t_max_err Answer(max_long* argc, t_atom** argv, max_long count) {
    char isAllocated = 0;
    atom_alloc_array(count, argc, argv, &isAllocated);
    for (max_long index = 0; index < count; ++index) atom_setlong(*argv + index, 7);
    return MAX_ERR_NONE;
}
/// "odd" cannot be read any more from the n-th reading on, counted from 1.
Step UnreadableFrom(int n) {
    return [n](ToyBox& box) {
        box.getOdd = [n, readings = 0](max_long* argc, t_atom** argv) mutable {
            return ++readings < n ? Answer(argc, argv, 1) : t_max_err{MAX_ERR_INVALID_PTR};
        };
    };
}
Step InvalidFrom(int n) {
    return [n](ToyBox& box) {
        box.getOdd = [n, readings = 0](max_long* argc, t_atom** argv) mutable {
            if (++readings < n) return Answer(argc, argv, 1);
            *argc = -2;
            return t_max_err{MAX_ERR_NONE};
        };
    };
}
void HoldsAnObject(ToyBox& box) {
    box.getOdd = [&box](max_long* argc, t_atom** argv) {
        Answer(argc, argv, 1);
        return atom_setobj(*argv, box.Get());
    };
}
Step Failing(const char* function, unsigned n = 1) {
    return [=](ToyBox&) {
        ASSERT_TRUE(HostApi::CanFail(function));
        HostApi::FailCall(function, n, MAX_ERR_OUT_OF_MEM);
    };
}

void HasAnObjectForUnit(ToyBox& box) {
    t_atom atom{};
    atom_setobj(&atom, box.Get());
    object_attr_addattr_atoms(box.Get(), "odd", "units", gensym("object"), 0, 1, &atom);
}

// ---- What meets it

Step Send(const char* message) {
    return [=](ToyBox& box) { box.Send(message); };
}
Step SendWithOutlet(const char* message) {
    return [=](ToyBox& box) {
        auto* const outlet = static_cast<t_object*>(outlet_new(box.Get(), nullptr));
        object_obex_store(box.Get(), gensym("dumpout"), outlet);
        box.Send(message);
    };
}
void GetState(ToyBox& box) {
    max_long count = 0;
    t_atom* atoms = nullptr;
    object_getvalueof(box.Get(), &count, &atoms);
    sysmem_freeptr(atoms);
}
void GetStateInto(ToyBox& box, max_long room) {
    std::vector<t_atom> memory(static_cast<std::size_t>(room) + 1);
    atom_setsym(&memory.back(), gensym("untouched"));
    max_long count = room;
    t_atom* atoms = memory.data();
    object_getvalueof(box.Get(), &count, &atoms);
    EXPECT_EQ(atoms, memory.data());
    EXPECT_EQ(atom_getsym(&memory.back()), gensym("untouched"));
}
void SetObjects(ToyBox& box) {
    t_atom state[2];
    for (t_atom& atom : state) atom_setobj(&atom, box.Get());
    object_setvalueof(box.Get(), 2, state);
}
void Page(ToyBox& box) { VelkMax::ReferencePage(box.Get()); }
Step Reset(const char* name) {
    return [=](ToyBox& box) { VelkMax::ResetAttributeToDefault(box.Get(), name); };
}
/// A dictionary in which "odd" is another dictionary and "level" 3.
void UseDictionary(ToyBox& box) {
    t_dictionary* const dictionary = dictionary_new();
    t_symbol* name = gensym("ours");
    dictobj_register(dictionary, &name);
    dictionary_appenddictionary(dictionary, gensym("odd"), &dictionary_new()->d_obj);
    dictionary_appendfloat(dictionary, gensym("level"), 3.0);
    dictionary_appendlong(dictionary, gensym("nonsense"), 1);
    box.Send("dictionary ours");
    object_free(dictionary);
}
/// The same as the dictionary of a creation.
void CreateFromDictionary(ToyBox& box) {
    t_dictionary* const dictionary = dictionary_new();
    dictionary_appenddictionary(dictionary, gensym("odd"), &dictionary_new()->d_obj);
    dictionary_appendfloat(dictionary, gensym("level"), 3.0);
    t_atom argument{};
    atom_setobj(&argument, dictionary);
    const char* const needed[] = {"level", "type"};
    VelkMax::CreationDictionary creation(box.Get(), {&argument, 1}, needed);
    EXPECT_TRUE(creation.IsGiven());
    creation.SetKnown();
    creation.ReportUnknown();
    object_free(dictionary);
}

class AttributeFailure : public testing::TestWithParam<Failure> {};

}  // namespace

TEST_P(AttributeFailure, IsPostedAndTheRestIsDone) {
    ToyBox box;
    GetParam().prepare(box);
    GetParam().act(box);
    const std::vector<std::string> console = box.TakeConsole();
    for (const std::string& line : GetParam().lines) {
        EXPECT_NE(std::ranges::find(console, line), console.end())
            << "missing: " << line << "\nfirst: " << (console.empty() ? "nothing" : console[0]);
    }
}

constexpr auto kNothing = [](ToyBox&) {};

// clang-format off
const Failure kFailures[] = {
    // name               what is wrong                              what meets it                lines
    {"OrderUnread",       UnreadableProperty("order"),               Send("postattributes"),      {"bug: Error in MaxAttribute::GetOrder : MAX_ERR_DUPLICATE", "post: odd 7", "post: found 2 attributes"}},
    {"OrderNoLong",       Property("order", "symbol", "first"),      Send("postattributes"),      {"bug: bug ? order attribute is supposed to be of type long for odd", "post: odd 7"}},
    {"InvisibleUnread",   UnreadableProperty("invisible"),           Send("postattributes"),      {"bug: MaxAttribute::IsInvisible : MAX_ERR_DUPLICATE in object_attr_getvalueof", "post: odd 7"}},
    {"InvisibleNoLong",   Property("invisible", "symbol", "yes"),    Send("postattributes"),      {"error: error attribute invisible not typed long ??", "post: odd 7"}},
    {"ChoicesUnread",     UnreadableProperty("enumvals"),            Page,                        {"bug: MaxAttribute::GetEnumChoices : MAX_ERR_DUPLICATE in object_attr_getvalueof"}},
    {"ChoiceNoSymbol",    Property("enumvals", "atom", "a 2 b"),     Page,                        {"error: enumvals attribute with an atom that is not a symbol ??"}},
    {"PropertyUnread",    UnreadableProperty("units"),               Page,                        {"bug: MaxAttribute::GetValueOf : MAX_ERR_DUPLICATE in object_attr_getvalueof (attribute units)"}},
    {"PropertyOfAnObject", HasAnObjectForUnit,                       Page,                        {"error: MaxAttribute::GetValueOf : units (attribute): unhandled atom type ?"}},
    {"NoDefault",         kNothing,                                  Reset("odd"),                {"error: attribute odd doesnt have a default value"}},
    {"DefaultUnread",     UnreadableProperty("default"),             Reset("odd"),                {"bug: MaxAttribute::CanBeReset : MAX_ERR_DUPLICATE in object_attr_getvalueof"}},
    {"DefaultFails",      Failing("object_attr_getvalueof", 2),      Reset("level"),              {"bug: ResetAttributeToDefault : MAX_ERR_OUT_OF_MEM in object_attr_getvalueof default level"}},
    {"NoAttribute",       kNothing,                                  Reset("nonsense"),           {"bug: bug ? MaxAttribute::CanBeReset()"}},
    {"NotSet",            Failing("object_attr_setvalueof"),         Reset("level"),              {"bug: MAX_ERR_OUT_OF_MEM in object_attr_setvalueof level"}},
    {"CountUnread",       UnreadableFrom(1),                         Send("postattributes"),      {"bug: GetNumberOfAtomsNeededToStoreAttribute : MAX_ERR_INVALID_PTR in object_attr_getvalueof (odd)", "post: level 0", "post: found 1 attributes"}},
    {"CountInvalid",      InvalidFrom(1),                            Send("postattributes"),      {"bug: GetNumberOfAtomsNeededToStoreAttribute : error in object_attr_getvalueof odd (ac=-2)", "post: level 0"}},
    {"PostUnread",        UnreadableFrom(2),                         Send("postattributes"),      {"bug: PostValueOfAttribute : MAX_ERR_INVALID_PTR in object_attr_getvalueof (odd)", "post: level 0"}},
    {"NoOutletToDump",    kNothing,                                  Send("dump"),                {"error: no dump outlet"}},
    {"NoOutletForDict",   kNothing,                                  Send("dumpdict"),            {"error: no dump outlet"}},
    {"DumpUnread",        UnreadableFrom(2),                         SendWithOutlet("dump odd"),  {"bug: DumpAttribute : MAX_ERR_INVALID_PTR in object_attr_getvalueof (odd)"}},
    {"DumpAllUnread",     UnreadableFrom(3),                         SendWithOutlet("dump"),      {"bug: DumpAllAttributes : MAX_ERR_INVALID_PTR in object_attr_getvalueof (odd)", "warn: 2 atoms allocated but 1 atoms dumped"}},
    {"DumpOfAnObject",    HoldsAnObject,                             SendWithOutlet("dump"),      {"error: unknown atom type in velkmax_dumpattributes"}},
    {"StateIntoMemory",   kNothing,                                  [](ToyBox& box) { GetStateInto(box, 2); }, {"warn: velkmax_getvalueof : memory passed in"}},
    {"StateIntoTooLittle", kNothing,                                 [](ToyBox& box) { GetStateInto(box, 1); }, {"warn: velkmax_getvalueof : memory passed in", "error: velkmax_getvalueof : there is a problem"}},
    {"StateUnread",       UnreadableFrom(3),                         GetState,                    {"bug: velkmax_getvalueof : MAX_ERR_INVALID_PTR in object_attr_getvalueof (odd)", "warn: 2 atoms allocated but 1 atoms stored by the pattrstorage"}},
    {"StateInvalid",      InvalidFrom(3),                            GetState,                    {"bug: velkmax_getvalueof : error in object_attr_getvalueof odd (tmpac=-2)"}},
    {"StateOfAnObject",   HoldsAnObject,                             GetState,                    {"error: velkmax_getvalueof : unknown atom type"}},
    {"StateNoMemory",     Failing("atom_alloc_array", 7),               GetState,                    {"error: out of memory : std::bad_alloc"}},
    {"StateOfObjects",    kNothing,                                  SetObjects,                  {"error: unknown atom type in velkmax_setvalueof"}},
    {"StateOfNothing",    kNothing,                                  [](ToyBox& box) { object_setvalueof(box.Get(), 2, nullptr); }, {"error: error reading atoms in velkmax_setvalueof"}},
    {"DictNoMemory",      Failing("dictionary_new"),                 SendWithOutlet("dumpdict"),  {"error: couldnt outlet dictionary"}},
    {"DictOfAnObject",    HoldsAnObject,                             SendWithOutlet("dumpdict"),  {"error: unknown atom type in AppendAttributeToDictionary"}},
    {"DictEntryNoAtom",   kNothing,                                  UseDictionary,               {"error: entry odd is not atom ? ", "error: no attribute nonsense"}},
    {"DictEntryFails",    Failing("dictionary_copyatoms"),           UseDictionary,               {"error: couldnt get dict key : odd"}},
    {"DictUnparsed",      Failing("dictionary_getkeys_ordered"),             UseDictionary,               {"error: error parsing dictionary named ours"}},
    {"CreationEntry",     kNothing,                                  CreateFromDictionary,        {"warn: dictionary doesnt have entry for type", "error: error getting atom value from dict for entry odd"}},
    {"CreationUnparsed",  Failing("dictionary_getkeys_ordered"),             CreateFromDictionary,        {"error: error parsing dictionary", "error: couldnt process dictionnary"}},
    {"NoVersion",         kNothing,                                  Send("version"),             {"error: Couldnt get external version"}},
    {"NoDocumentation",   kNothing,                                  Page,                        {"error: MaxXmlDocumentation::GetObjectListOfArguments no classdescription class attribute",
                                                                                                   "error: MaxXmlDocumentation::GetObjectListOfInletsDescription no classdescription class attribute",
                                                                                                   "error: MaxXmlDocumentation::GetObjectListOfOutletsDescription no classdescription class attribute",
                                                                                                   "error: MaxXmlDocumentation::getObjectMethodsDescription no classdescription class attribute"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Kinds,
                         AttributeFailure,
                         testing::ValuesIn(kFailures),
                         [](const auto& row) { return row.param.name; });
