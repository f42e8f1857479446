// SPDX-License-Identifier: MIT
// The reference page of a class for Max's documentation browser, made from what the class
// registered and from one of its objects.
#pragma once

#include "max/VelkMaxObjectParts.h"

#include <string>

namespace VelkMax {

/// The page as text. Everything is written as it was stored, markup included: that it is
/// well-formed is the business of whoever wrote the texts. Lists that the class does not have are
/// said on the object's console row and stay empty.
/// Thread: main.  Throws: std::bad_alloc.
std::string ReferencePage(t_object* object);

/// Writes CLASS.maxref.xml into the folder of the class's module.
void GenerateXmlMessage(const ObjectParts& object);

}  // namespace VelkMax
