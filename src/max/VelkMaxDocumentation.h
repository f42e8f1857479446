// SPDX-License-Identifier: MIT
// The documentation of a class: hidden attributes from which the message "version" and the
// reference page take their texts.
#pragma once

#include "max/VelkMaxHandlers.h"

namespace VelkMax {

/// Texts go into the reference page unchanged, so they must be well-formed XML.
struct ClassDocumentation {
    const char* digest;
    const char* description;
    std::span<const char* const> seeAlso;
    const char* version;
    std::span<const ArgumentDoc> arguments;  // of the box, all optional
    std::span<const ArgumentDoc> inlets;     // type, digest, description
    std::span<const ArgumentDoc> outlets;
};

/// Adds classdigest, classdescription, classseealso and externalversion: invisible symbols of the
/// category "documentation", whose text is both their label and their value. The related classes
/// are one text, separated by blanks. The lists become the properties "arguments", "inlets" and
/// "outlets" of classdescription, three symbols for each row: type, name, description.
void AddClassDocumentation(t_class* type, const ClassDocumentation& documentation);

/// Stores the documentation of the rows with a digest for the reference page: a dictionary in the
/// property "methods" of classdescription. An entry holds symbols: digest, description, then type
/// and name of each argument. Pattern: AddClassDocumentation DocumentMessages*
void DocumentMessages(t_class* type, std::span<const MessageRow> rows);

}  // namespace VelkMax
