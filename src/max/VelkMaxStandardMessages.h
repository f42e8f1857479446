// SPDX-License-Identifier: MIT
// The table of the messages that objects of every class have.
#pragma once

#include "max/VelkMaxAnyObject.h"
#include "max/VelkMaxDictionaries.h"
#include "max/VelkMaxReference.h"
#include "max/VelkMaxState.h"

namespace VelkMax {

// Texts for the reference page, with the markup of Max's reference pages.
namespace Help {

inline constexpr ArgumentDoc kAttributeName[] = {{"symbol", "attribute name"}};
inline constexpr ArgumentDoc kAttributeNames[] = {{"list of symbol", "attribute names"}};
inline constexpr ArgumentDoc kValues[] = {{"list of int or float or symbol", "values"}};
inline constexpr ArgumentDoc kDictionaryName[] = {{"symbol", "dictionary name"}};
inline constexpr ArgumentDoc kFileName[] = {{"symbol", "file name"}};

inline constexpr char kPostAttributesHelp[] =
    "post the value of an attribute to Max window. <br/> if no attribute name is specified this "
    "post the value of all attributes.";
inline constexpr char kDumpHelp[] =
    "dump value of an attribute. <br/> if no attribute-name is specified this will dump the value "
    "of all attributes.";
inline constexpr char kRecallPresetHelp[] =
    "this method is provided for compatibility with the Max/MSP <m>preset</m> object. This method "
    "is called by the preset object when recalling a preset. This should not be used in any other "
    "situation.";
inline constexpr char kReadDictHelp[] =
    "reads a JSON file of attributes, as exportdict writes it, and sets each of them. <br/> if no "
    "file name is specified a dialog asks for it.";

}  // namespace Help

/// Adds a method that only Max itself calls, with untyped arguments.
template <auto Function>
t_max_err AddPrivate(t_class* type, const char* name) {
    return class_addmethod(type, AsMethod(Function), name, A_CANT, 0);
}

/// Messages that post, send, store and restore attributes and write the reference page. The object
/// must have an outlet stored under "dumpout", and its class the attributes of
/// AddClassDocumentation.
template <class Object>
std::span<const MessageRow> StandardMessages() {
    using namespace Help;
    // clang-format off
    static constexpr MessageRow kMessages[] = {
        // name            handler                                       digest                              description                                                         arguments
        {"postattributes", AnyHandler<Object, &PostAttributesMessage>,   "Post values of attributes",        kPostAttributesHelp,                                                kAttributeName},
        {"generatexml",    AnyHandler<Object, &GenerateXmlMessage>,      "Write the reference page",         "this method is for service use only."},
        {"version",        AnyHandler<Object, &VersionMessage>,          "Post the version",                 "post version of the object to the Max window."},
        {"getvalueof",     &AddPrivate<&GetValueOfMethod>},
        {"setvalueof",     &AddPrivate<&SetValueOfMethod>},
        {"preset",         AnyHandler<Object, &PresetMessage>},
        {"recallpreset",   AnyHandler<Object, &RecallPresetMessage>,     "Take the values of a preset",      kRecallPresetHelp,                                                  kValues},
        {"exportdict",     AnyHandler<Object, &ExportDictMessage>,       "Save all attributes in a file",    "export current state as a JSON file."},
        {"dumpdict",       AnyHandler<Object, &DumpDictMessage>,         "Send attributes as a dictionary",  "outputs current state as a dictionary (through the dump outlet).", kAttributeNames},
        {"dictionary",     AnyHandler<Object, &DictionaryMessage>,       "Set attributes from a dictionary", "receives and parses a dictionary (of attributes).",                kDictionaryName},
        {"readdict",       AnyOptionalHandler<Object, &ReadDictMessage>, "Set attributes from a file",       kReadDictHelp,                                                      kFileName},
        {"dump",           AnyHandler<Object, &DumpMessage>,             "Send values of attributes",        kDumpHelp,                                                          kAttributeName},
    };
    // clang-format on
    return kMessages;
}

}  // namespace VelkMax
