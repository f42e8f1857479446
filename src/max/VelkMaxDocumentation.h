// SPDX-License-Identifier: MIT
// What a class says of itself: the hidden attributes from which version posts and reference pages
// are made.
#pragma once

#include "max/VelkMaxHandlers.h"

namespace VelkMax {

/// Texts are written into the reference page as they stand: well-formed XML.
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
/// category "documentation", whose text is both their label and their value. The names to see also
/// stand in one text, separated by blanks. The lists hang on classdescription as its properties
/// "arguments", "inlets" and "outlets", three symbols a row: type, name, description.
void AddClassDocumentation(t_class* type, const ClassDocumentation& documentation);

/// Keeps what the rows with a digest say, for the reference page: a dictionary under the property
/// "methods" of classdescription. An entry holds symbols: digest, description, then type and name
/// of each argument. Pattern: AddClassDocumentation DocumentMessages*
void DocumentMessages(t_class* type, std::span<const MessageRow> rows);

}  // namespace VelkMax
