// SPDX-License-Identifier: MIT
// The console texts that only quilo.pan~ posts, by handler. Their spelling, blanks and mistakes are
// promises to patches; indices in them count from 1, as in messages.
#pragma once

#include "max/VelkMaxTexts.h"

namespace Quilo {

using VelkMax::Text;

// clang-format off

// Creation
inline constexpr Text<> kNotCreated{"couldnt create object (quilo_pan_new)"};
inline constexpr Text<> kNotInitialized{"couldnt create object (quilo_pan_initialize)"};
inline constexpr Text<> kUnsupported{"Unsupported panning configuration"};

// Attributes that are fixed once the engine exists
inline constexpr Text<int>         kInputsAreFixed{"could not dynamically change number of inputs : %d"};
inline constexpr Text<int>         kOutputsAreFixed{"could not dynamically change number of outputs : %d"};
inline constexpr Text<const char*> kTypeIsFixed{"could not dynamically change pan type : %s"};
inline constexpr Text<const char*> kSubTypeIsFixed{"could not dynamically change pan subtype : %s"};

// Attributes and messages that this panner does not have; the word is the attribute or handler
inline constexpr Text<>            kOnlyBinaural{"message only supported by binaural"};
inline constexpr Text<>            kOnlySnowman{"message only supported by binaural snowman"};
inline constexpr Text<>            kOnlyNearfield{"message only supported by binaural nearfield"};
inline constexpr Text<>            kOnlyBinauralListener{"message only supported for binaural panning"};
inline constexpr Text<const char*> kOnlyHoa{"message only supported by hoa : %s"};
inline constexpr Text<const char*> kOnlySubwoofers{"message only supported by subwoofers : %s"};
inline constexpr Text<>            kOnlyDbap{"message only supported by dbap"};
inline constexpr Text<>            kOnlyPanr{"message only supported by panr"};
inline constexpr Text<>            kOnlyKnn{"message only supported by knn panning"};
inline constexpr Text<const char*> kNoPanner{"couldnt get object : %s"};

// Unknown keywords
inline constexpr Text<const char*> kInvalidSpreadMode{"invalid spreadmode %s"};
inline constexpr Text<const char*> kInvalidEncoding{"invalid hoa encoding %s"};
inline constexpr Text<const char*> kInvalidHoaMode{"invalid hoa mode %s"};
inline constexpr Text<const char*> kInvalidItdType{"invalid itd type : %s"};
inline constexpr Text<const char*> kInvalidItdLatency{"invalid itd latency : %s"};
inline constexpr Text<const char*> kInvalidFadeShape{"invalid crossfade type : %s"};
inline constexpr Text<const char*> kInvalidImplementation{"invalid implementation : %s"};

// HRTF sets
inline constexpr Text<const char*> kHrtfLoaded{"Loaded hrtf from %s"};
inline constexpr Text<const char*> kHrtfNotLoaded{"Error loading file : %s"};
inline constexpr Text<const char*> kNearfieldLoaded{"Loaded nearfield compensation filters from %s"};
inline constexpr Text<const char*> kNearfieldNotLoaded{"Error loading compensation filters from %s"};

// corners
inline constexpr Text<>    kInvalidCorners{"invalid message : corners"};
inline constexpr Text<int> kTooManyCorners{"Too many corners arguments. only %d corners values will be read"};

// OSC
inline constexpr Text<>            kInvalidFullPacket{"invalid message : FullPacket"};
inline constexpr Text<const char*> kTooLong{"message too long : %s"};
inline constexpr Text<const char*> kNotUnderstood{"doesn't understand \"%s\""};

// source
inline constexpr Text<>    kInvalidSource{"invalid message : source"};
inline constexpr Text<int> kInvalidSourceIndex{"invalid source index %d"};
inline constexpr Text<>    kNoSpread{"this type of panning doesnt support spread messages"};
inline constexpr Text<>    kInvalidSpreadXyz{"invalid spreadxyz message"};
inline constexpr Text<>    kNoSpreadXyz{"this type of panning doesnt support spreadxyz messages"};
inline constexpr Text<>    kInvalidNumNeighbors{"invalid numneighbors message"};
inline constexpr Text<int> kTooFewNeighbors{"invalid numneighbors : %d"};
inline constexpr Text<int> kTooFewSourceValues{"not enough source coordinates. expected %d coordinates"};
inline constexpr Text<int> kTooManySourceValues{"too many source coordinates. only %d coordinates will be read"};
inline constexpr Text<>    kUnreadableSource{"error reading source coordinates"};

// speakers
inline constexpr Text<>    kInvalidSpeakers{"invalid message : speakers"};
inline constexpr Text<int> kTooFewSpeakers{"not enough loudspeakers positions. expected %d loudspeakers positions"};
inline constexpr Text<int> kTooManySpeakers{"too many loudspeakers positions. only %d positions will be read"};
inline constexpr Text<int> kUnreadableNthSpeaker{"error reading %d th speaker position"};

// speaker
inline constexpr Text<>    kInvalidSpeaker{"invalid speaker message"};
inline constexpr Text<int> kInvalidSpeakerIndex{"invalid speaker index %d"};
inline constexpr Text<int> kTooManySpeakerValues{"too many loudspeakers positions. only %d position will be read"};
inline constexpr Text<>    kUnreadableSpeaker{"error reading speaker position"};


// listener
inline constexpr Text<>    kInvalidListener{"invalid message : listener"};
inline constexpr Text<>    kInvalidListenerValues{"invalid listener message"};
inline constexpr Text<int> kTooManyListenerValues{"too many listener positions. only %d position will be read"};
inline constexpr Text<>    kUnreadableListener{"error reading listener position"};

// clang-format on

}  // namespace Quilo
