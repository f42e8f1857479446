// SPDX-License-Identifier: MIT
// The reference page of a class for Max's documentation browser, made from what the class
// registered and from one of its objects.
#pragma once

#include "max/VelkMaxObjectParts.h"

#include <string>

namespace VelkMax {

/// The page as text. Stored texts are copied unchanged, markup included, so the page is well-formed
/// only if they are. For a list that the class does not have, an error is posted on the object's
/// console row and the list stays empty.
/// Thread: main.  Throws: std::bad_alloc.
std::string ReferencePage(t_object* object);

/// Writes CLASS.maxref.xml into the folder of the class's module.
void GenerateXmlMessage(const ObjectParts& object);

}  // namespace VelkMax
