// SPDX-License-Identifier: MIT
#include "max/VelkMaxStandardMessages.h"

#include "max/VelkMaxDictionaries.h"
#include "max/VelkMaxReference.h"
#include "max/VelkMaxState.h"

namespace VelkMax {

namespace {

/// A method that only Max itself calls.
template <auto Function>
t_max_err AddPrivate(t_class* type, const char* name) {
    return class_addmethod(type, AsMethod(Function), name, A_CANT, 0);
}

constexpr ArgumentDoc kAttributeName[] = {{"symbol", "attribute name"}};
constexpr ArgumentDoc kAttributeNames[] = {{"list of symbol", "attribute names"}};
constexpr ArgumentDoc kValues[] = {{"list of int or float or symbol", "values"}};
constexpr ArgumentDoc kDictionaryName[] = {{"symbol", "dictionary name"}};
constexpr ArgumentDoc kFileName[] = {{"symbol", "file name"}};

// The markup is that of Max's reference pages.
constexpr char kPostAttributesHelp[] =
    "post the value of an attribute to Max window. <br/> if no attribute name is specified this "
    "post the value of all attributes.";
constexpr char kDumpHelp[] =
    "dump value of an attribute. <br/> if no attribute-name is specified this will dump the value "
    "of all attributes.";
constexpr char kRecallPresetHelp[] =
    "this method is provided for compatibility with the Max/MSP <m>preset</m> object. This method "
    "is called by the preset object when recalling a preset. This should not be used in any other "
    "situation.";
constexpr char kReadDictHelp[] =
    "reads a JSON file of attributes, as exportdict writes it, and sets each of them. <br/> if no "
    "file name is specified a dialog asks for it.";

}  // namespace

std::span<const MessageRow> StandardMessages() {
    // clang-format off
    static constexpr MessageRow kMessages[] = {
        // name             handler                               digest                             description                                                          arguments
        {"postattributes",  Handler<&PostAttributesMessage>,      "Post values of attributes",       kPostAttributesHelp,                                                 kAttributeName},
        {"generatexml",     Handler<&GenerateXmlMessage>,         "Write the reference page",        "this method is for service use only."},
        {"version",         Handler<&VersionMessage>,             "Post the version",                "post version of the object to the Max window."},
        {"getvalueof",      &AddPrivate<&GetValueOfMethod>},
        {"setvalueof",      &AddPrivate<&SetValueOfMethod>},
        {"preset",          Handler<&PresetMessage>},
        {"recallpreset",    Handler<&RecallPresetMessage>,        "Take the values of a preset",     kRecallPresetHelp,                                                   kValues},
        {"exportdict",      Handler<&ExportDictMessage>,          "Save all attributes in a file",   "export current state as a JSON file."},
        {"dumpdict",        Handler<&DumpDictMessage>,            "Send attributes as a dictionary", "outputs current state as a dictionary (through the dump outlet).",  kAttributeNames},
        {"dictionary",      Handler<&DictionaryMessage>,          "Set attributes from a dictionary", "receives and parses a dictionary (of attributes).",                kDictionaryName},
        {"readdict",        OptionalHandler<&ReadDictMessage>,    "Set attributes from a file",      kReadDictHelp,                                                       kFileName},
        {"dump",            Handler<&DumpMessage>,                "Send values of attributes",       kDumpHelp,                                                           kAttributeName},
    };
    // clang-format on
    return kMessages;
}

}  // namespace VelkMax
