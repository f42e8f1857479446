// SPDX-License-Identifier: MIT
// What a headless host gets from the MaxAPI library beside the API itself. Modules never see it.
//
// The library behaves as Max does where a module can tell; what Max would show on its screen or
// take from its user goes through here: console rows, messages out of outlets, the deferred work,
// clocks, and what the inspector knows about classes and objects.
//
// Order of use: set the sinks, load the module and call its entry, object_new_typed, then
// (DeliverMessage RunDeferred AdvanceClocks)*, object_free. The thread that loaded the library is
// the main thread. Unless said otherwise a function here belongs to the main thread and throws
// nothing.
#pragma once

#include "ApiFailingCalls.h"

#include "ext.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace HostApi {

// ---- Console

enum class PostKind : std::uint8_t {
    Post = 0,
    Error = 1,
    Warning = 2,
    Bug = 3
};  // the POSTROW_ codes

/// One row as object_post and its like made it, without line end.  object may be null.
/// Thread: any; calls are serialised.
using ConsoleSink = std::function<void(PostKind kind, std::string_view text, t_object* object)>;
MAXAPI_EXPORT void SetConsoleSink(ConsoleSink sink);

// ---- Outlets

struct OutletMessage {
    t_object* object;
    std::size_t outlet;  // from 0 at the left, signal outlets included
    bool isDumpout;      // the outlet stored under "dumpout"
    t_symbol* selector;  // bang, int, float, list, or any
    std::span<const t_atom> atoms;
};

/// What left an outlet.  Thread: that of the sender; calls are serialised.
using OutletSink = std::function<void(const OutletMessage& message)>;
MAXAPI_EXPORT void SetOutletSink(OutletSink sink);

/// Type of each inlet and outlet from the left: "signal", or the type given at creation, "" for
/// any.
MAXAPI_EXPORT std::vector<std::string> InletTypes(t_object* object);
MAXAPI_EXPORT std::vector<std::string> OutletTypes(t_object* object);

// ---- Messages

/// Sends a message as a patch cord would: typed dispatch, attribute setters, get messages, lists
/// spread over the inlets of an object without `list`.  What the object refuses is posted as an
/// error.
/// @param inlet  from 0 at the left; proxy_getinlet tells it to the method
/// @return the API's error code, 0 when a method ran or an attribute was set
MAXAPI_EXPORT t_max_err DeliverMessage(t_object* object,
                                       std::size_t inlet,
                                       t_symbol* selector,
                                       std::span<const t_atom> atoms);

struct MessageInfo {
    t_symbol* name;
    std::vector<int> types;  // A_ codes without the ending 0
};

/// Registered messages of a class in the order of registration, those of class_dspinit included.
MAXAPI_EXPORT std::vector<MessageInfo> Messages(const t_class* type);

// ---- Attributes

struct PropertyInfo {
    t_symbol* name;
    std::vector<t_atom> values;
};

struct AttributeInfo {
    t_symbol* name;
    t_symbol* type;  // "float32", "symbol", ...
    max_long flags;  // ATTR_ flags
    bool isInstance;
    std::vector<PropertyInfo> properties;  // in the order in which they were added
};

/// Attributes in inspector order: by property "order" (1, 2, ... then those without, then -n ...
/// -1), equal ones as they were added, those of the class before those of the instance.
MAXAPI_EXPORT std::vector<AttributeInfo> Attributes(t_object* object);

/// Value of an attribute as its getter gives it, empty when there is none or it may not be read.
MAXAPI_EXPORT std::vector<t_atom> AttributeValue(t_object* object, std::string_view name);

// ---- Presets

/// One message of a preset: the object, its class name, the message to be sent back, the values.
using PresetRecord = std::vector<t_atom>;

/// Sends `preset` the way the preset object does.  @return what the object stored
MAXAPI_EXPORT std::vector<PresetRecord> StorePreset(t_object* object);

// ---- Files and dialogs.  Names are searched in the folder of the patcher, in the current folder
// and
// ---- in the folders that were added, in this order.

MAXAPI_EXPORT void SetPatcherFolder(const std::filesystem::path& folder);
MAXAPI_EXPORT void AddSearchFolder(const std::filesystem::path& folder);

/// Where the classes that are made from now on come from (class_getpath).
MAXAPI_EXPORT void SetModuleFolder(const std::filesystem::path& folder);

enum class Dialog : std::uint8_t { Open, SaveAs };

/// What the user will choose in the next dialog of this kind; none, and in any later one:
/// cancelled.
MAXAPI_EXPORT void AnswerDialog(Dialog dialog, std::optional<std::filesystem::path> file);

// ---- Watching

/// @param attribute  the one that was changed, null for any message but attr_modified
using WatchSink = std::function<void(t_symbol* message, t_symbol* attribute)>;

/// Attaches a client, as an inspector or a pattr does; object_free ends it.
MAXAPI_EXPORT t_object* Watch(t_object* object, WatchSink sink);

// ---- Faults

/// Makes the n-th call of an API function from now on fail, with this code where it gives one.
/// @param n  0: nothing fails, whatever was planned    @return whether a plan still waited
MAXAPI_EXPORT bool FailCall(std::string_view function, unsigned n, t_max_err code);

/// How many objects are alive, and how many blocks of sysmem memory.
MAXAPI_EXPORT std::size_t CountObjects();
MAXAPI_EXPORT std::size_t CountBlocks();

/// Reports writes to freed memory that have not been noticed yet, and forgets who has died: what is
/// counted before and after then differs by what modules keep.
MAXAPI_EXPORT void CheckFreedMemory();

// ---- Text of atoms

/// Text that reads back to the same atoms: floats with the shortest digits that give the same
/// 32-bit value (`1` for 1.0), symbols quoted where they hold blanks or quotes, are empty or read
/// as numbers. Thread: any.
MAXAPI_EXPORT std::string AtomText(const t_atom& atom);
MAXAPI_EXPORT std::string AtomText(std::span<const t_atom> atoms);  // separated by one blank

/// What atom_setparse reads: blanks separate, quoted text is one symbol, a backslash escapes, `1`
/// is a long, `1.` and `1e3` are floats, anything else is a symbol.  Never fails: a quote that is
/// not closed ends with the text.  Thread: any.
MAXAPI_EXPORT std::vector<t_atom> ParseAtoms(std::string_view text);

// ---- Threads, deferred work, clocks

/// What the calling thread counts as; the thread that loaded the library is Main, others Scheduler.
/// Audio: messages while Max runs its scheduler inside the audio interrupt.  Perform: a perform
/// routine, which may neither post nor queue nor send; what it does is reported.
enum class ThreadKind : std::uint8_t { Main, Scheduler, Audio, Perform };
MAXAPI_EXPORT ThreadKind CurrentThreadKind();

/// The calling thread counts as another kind while this lives.
class MAXAPI_EXPORT ThreadScope {
public:
    explicit ThreadScope(ThreadKind kind);
    ~ThreadScope();
    ThreadScope(const ThreadScope&) = delete;
    ThreadScope& operator=(const ThreadScope&) = delete;

private:
    ThreadKind previous_;
    bool wasSet_;
};

/// Which of the host's actions something happens for; the host numbers them from 1, as it likes.
/// Work that is put off (queued, or called by a clock) happens for the action that put it off.
/// Where several did, because the work was put off again while it waited or because messages of the
/// audio interrupt collect, `first` and `last` are the least and the largest number of them.
struct Cause {
    int first = 0, last = 0;  // 0: none
};
/// Of the calling thread.  Thread: any.
MAXAPI_EXPORT void SetCause(const Cause& cause);
MAXAPI_EXPORT Cause CurrentCause();

/// Runs the work that was queued for the main thread before the call, in order; what that work
/// queues in turn stays for the next call.  @return how many functions ran
MAXAPI_EXPORT std::size_t RunDeferred();

/// Moves the time of clocks and systimer_gettime on and runs the clocks that fall due, by time, as
/// the scheduler thread.  @param ms  at least 0
MAXAPI_EXPORT void AdvanceClocks(double ms);

}  // namespace HostApi
