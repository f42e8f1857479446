// SPDX-License-Identifier: MIT
// Console texts that objects of every class can post. Their spelling, blanks and mistakes are
// promises to patches.
#pragma once

#include "max/VelkMaxText.h"

namespace VelkMax {

// clang-format off

// Exceptions in a handler
inline constexpr Text<const char*> kLibraryException{"exception : %s"};
inline constexpr Text<const char*> kOutOfMemory{"out of memory : %s"};
inline constexpr Text<>            kUnknownException{"unknown exception"};

// Creation and registration
inline constexpr Text<>            kNoMemory{"couldnt allocate memory"};
inline constexpr Text<const char*> kMethodNotAdded{"error when adding method %s"};

// Attributes
inline constexpr Text<>            kNoMemoryForAttribute{"error allocating memory for attribute"};
inline constexpr Text<const char*> kNoMemoryForGetter{"couldnt allocate memory for attribute %s getter"};
inline constexpr Text<const char*> kUnreadableValue{"error reading value of attribute %s"};
inline constexpr Text<const char*> kUnknownAttribute{"unknown attribute %s"};

// Messages of the audio thread that came faster than they could be carried out
inline constexpr Text<int>         kLettersLost{"%d messages from the audio thread came too fast and were lost"};
inline constexpr Text<int>         kMessagesLost{"%d messages came too fast and were lost"};

// A message that is refused as a whole: the refusal, then the arguments if there are any
inline constexpr Text<const char*, const char*> kRefused{"%s %s"};
inline constexpr Text<const char*>              kRefusedAlone{"%s "};

// Coordinate formats
inline constexpr Text<> kDefaultFormat{"using default coordinate type (ade)"};
inline constexpr Text<> kUnknownFormat{"unknown coordinate type"};

// State of the signal processing
inline constexpr Text<> kDspMuted{"dsp processing is muted"};
inline constexpr Text<> kDspBypassed{"dsp processing is bypassed"};
inline constexpr Text<> kDspEnabled{"dsp processing is enabled"};
inline constexpr Text<> kDspOn{"dsp is on"};
inline constexpr Text<> kDspOff{"dsp is off"};

// Lines that are composed elsewhere, such as the description of the engine
inline constexpr Text<const char*> kLine{"%s"};

// clang-format on

}  // namespace VelkMax
