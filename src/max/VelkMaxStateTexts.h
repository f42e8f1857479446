// SPDX-License-Identifier: MIT
// Console texts that are posted when the attributes of an object of any class are posted, sent,
// stored or restored, or its reference page is written. Their spelling, blanks and mistakes are
// promises to patches.
#pragma once

#include "max/VelkMaxText.h"

namespace VelkMax {

// clang-format off

// Reading one attribute: Max's error code, then the name of the attribute
inline constexpr Text<const char*>                           kOrderUnread{"Error in MaxAttribute::GetOrder : %s"};
inline constexpr Text<const char*>                           kOrderNoLong{"bug ? order attribute is supposed to be of type long for %s"};
inline constexpr Text<const char*>                           kChoicesUnread{"MaxAttribute::GetEnumChoices : %s in object_attr_getvalueof"};
inline constexpr Text<>                                      kChoiceNoSymbol{"enumvals attribute with an atom that is not a symbol ??"};
inline constexpr Text<const char*, const char*, const char*> kValueUnread{"MaxAttribute::GetValueOf : %s in object_attr_getvalueof (%s %s)"};
inline constexpr Text<const char*, const char*>              kValueUnknownAtom{"MaxAttribute::GetValueOf : %s (%s): unhandled atom type ?"};
inline constexpr Text<const char*>                           kInvisibleUnread{"MaxAttribute::IsInvisible : %s in object_attr_getvalueof"};
inline constexpr Text<>                                      kInvisibleNoLong{"error attribute invisible not typed long ??"};
inline constexpr Text<const char*>                           kResettableUnread{"MaxAttribute::CanBeReset : %s in object_attr_getvalueof"};
inline constexpr Text<>                                      kResettableNone{"bug ? MaxAttribute::CanBeReset()"};
inline constexpr Text<const char*, const char*>              kCountUnread{"GetNumberOfAtomsNeededToStoreAttribute : %s in object_attr_getvalueof (%s)"};
inline constexpr Text<const char*, long>                     kCountInvalid{"GetNumberOfAtomsNeededToStoreAttribute : error in object_attr_getvalueof %s (ac=%ld)"};

// Reset to default
inline constexpr Text<const char*>              kNoDefault{"attribute %s doesnt have a default value"};
inline constexpr Text<const char*, const char*> kDefaultUnread{"ResetAttributeToDefault : %s in object_attr_getvalueof default %s"};

// Setting an attribute from a stored value
inline constexpr Text<const char*, const char*> kNotSet{"%s in object_attr_setvalueof %s"};

// postattributes and dump
inline constexpr Text<int>                      kFoundAttributes{"found %d attributes"};
inline constexpr Text<const char*, const char*> kAttributeLine{"%s %s"};
inline constexpr Text<const char*>              kNoAttribute{"no attribute %s"};
inline constexpr Text<>                         kInvalidPostAttributes{"invalid message : postattributes"};
inline constexpr Text<const char*, const char*> kPostUnread{"PostValueOfAttribute : %s in object_attr_getvalueof (%s)"};
inline constexpr Text<>                         kNoDumpOutlet{"no dump outlet"};
inline constexpr Text<>                         kInvalidDump{"invalid message : dump"};
inline constexpr Text<int, int>                 kDumpCountDiffers{"%d atoms allocated but %d atoms dumped"};
inline constexpr Text<>                         kDumpUnknownAtom{"unknown atom type in velkmax_dumpattributes"};
inline constexpr Text<const char*, const char*> kDumpUnread{"DumpAttribute : %s in object_attr_getvalueof (%s)"};
inline constexpr Text<const char*, const char*> kDumpAllUnread{"DumpAllAttributes : %s in object_attr_getvalueof (%s)"};

// getvalueof and setvalueof
inline constexpr Text<>                         kMemoryPassedIn{"velkmax_getvalueof : memory passed in"};
inline constexpr Text<int, int>                 kStoredCountDiffers{"%d atoms allocated but %d atoms stored by the pattrstorage"};
inline constexpr Text<const char*, const char*> kStateUnread{"velkmax_getvalueof : %s in object_attr_getvalueof (%s)"};
inline constexpr Text<const char*, long>        kStateInvalid{"velkmax_getvalueof : error in object_attr_getvalueof %s (tmpac=%ld)"};
inline constexpr Text<>                         kStateUnknownAtom{"velkmax_getvalueof : unknown atom type"};
inline constexpr Text<>                         kStateProblem{"velkmax_getvalueof : there is a problem"};
inline constexpr Text<int, int>                 kStateCountDiffers{"setvalueof error (received %d atoms. %d atoms were expected)"};
inline constexpr Text<>                         kStateUnreadable{"error reading atoms in velkmax_setvalueof"};
inline constexpr Text<>                         kRestoredUnknownAtom{"unknown atom type in velkmax_setvalueof"};

// preset
inline constexpr Text<> kNoPreset{"error in velkmax_preset"};

// Dictionaries
inline constexpr Text<>                         kInvalidDumpDict{"invalid message : dumpdict"};
inline constexpr Text<>                         kNotOutlet{"couldnt outlet dictionary"};
inline constexpr Text<>                         kAppendUnknownAtom{"unknown atom type in AppendAttributeToDictionary"};
inline constexpr Text<const char*, const char*> kAppendUnread{"AppendAttributeToDictionary : %s in object_attr_getvalueof (%s)"};
inline constexpr Text<const char*>              kNoDictionary{"unable to reference dictionary named %s"};
inline constexpr Text<const char*>              kDictionaryUnparsed{"error parsing dictionary named %s"};
inline constexpr Text<const char*>              kNoEntry{"couldnt get dict key : %s"};
inline constexpr Text<const char*>              kEntryNoAtom{"entry %s is not atom ? "};

// The dictionary of a creation
inline constexpr Text<const char*> kCreationNoEntry{"dictionary doesnt have entry for %s"};
inline constexpr Text<const char*> kCreationEntryUnread{"error getting atom value from dict for entry %s"};
inline constexpr Text<>            kCreationUnparsed{"error parsing dictionary"};
inline constexpr Text<>            kCreationUnprocessed{"couldnt process dictionnary"};

// Files
inline constexpr Text<const char*> kNotLocated{"Couldnt locate file :  %s"};
inline constexpr Text<const char*> kNotWritten{"could not create %s"};

// version
inline constexpr Text<const char*> kVersionLine{"Version %s"};
inline constexpr Text<>            kNoVersion{"Couldnt get external version"};

// generatexml
inline constexpr Text<const char*> kPageWritten{"documentation generated in %s"};
inline constexpr Text<const char*> kNoArguments{"MaxXmlDocumentation::GetObjectListOfArguments no %s class attribute"};
inline constexpr Text<const char*> kNoInlets{"MaxXmlDocumentation::GetObjectListOfInletsDescription no %s class attribute"};
inline constexpr Text<const char*> kNoOutlets{"MaxXmlDocumentation::GetObjectListOfOutletsDescription no %s class attribute"};
inline constexpr Text<const char*> kNoMethods{"MaxXmlDocumentation::getObjectMethodsDescription no %s class attribute"};

// clang-format on

}  // namespace VelkMax
