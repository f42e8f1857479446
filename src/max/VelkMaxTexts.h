// SPDX-License-Identifier: MIT
// Console texts that every object can post. Their spelling, blanks and slips are promises.
#pragma once

#include "max/VelkMaxText.h"

namespace VelkMax {

// clang-format off

// Failures that arrive at a handler
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

// What the audio thread sent faster than it could be carried out
inline constexpr Text<int>         kLettersLost{"%d messages from the audio thread came too fast and were lost"};

// A message that is refused as a whole: its text, then its arguments or only the blank
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

// Lines that come from elsewhere, such as a description of the engine
inline constexpr Text<const char*> kLine{"%s"};

// clang-format on

}  // namespace VelkMax
