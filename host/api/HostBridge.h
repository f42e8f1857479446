// SPDX-License-Identifier: MIT
// The interface of the MaxAPI library to a host without a screen. Modules do not use it.
//
// To modules the library behaves as Max does. What Max would show on its screen or get from its
// user goes through this interface: console rows, messages from outlets, deferred work, clocks, and
// the inspector's queries about classes and objects.
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

/// Receives one console row, without line end.  object may be null.
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

/// Receives a message from an outlet. Thread: that of the sender; calls are serialised.
using OutletSink = std::function<void(const OutletMessage& message)>;
MAXAPI_EXPORT void SetOutletSink(OutletSink sink);

/// Type of each inlet and outlet from the left: "signal", or the type given at creation, "" for
/// any.
MAXAPI_EXPORT std::vector<std::string> InletTypes(t_object* object);
MAXAPI_EXPORT std::vector<std::string> OutletTypes(t_object* object);

// ---- Messages

/// Sends a message as a patch cord would: typed dispatch, attribute setters, get messages, lists
/// spread over the inlets of an object without `list`.  Messages that the object refuses are posted
/// as errors.
/// @param inlet  from 0 at the left; the method can read it with proxy_getinlet
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

/// Attributes in the order of the inspector: by the property "order" (1, 2, ..., then those
/// without, then ..., -2, -1), equal ones as they were added, those of the class before those of
/// the instance.
MAXAPI_EXPORT std::vector<AttributeInfo> Attributes(t_object* object);

/// The value that the getter of an attribute returns; empty if there is no such attribute or it may
/// not be read.
MAXAPI_EXPORT std::vector<t_atom> AttributeValue(t_object* object, std::string_view name);

// ---- Presets

/// One record of a preset: the object, its class name, the message that restores it, the values.
using PresetRecord = std::vector<t_atom>;

/// Sends the message `preset` as the preset object does. @return the records that the object stored
MAXAPI_EXPORT std::vector<PresetRecord> StorePreset(t_object* object);

// ---- Files and dialogs.  Names are searched in the folder of the patcher, in the current folder
// and
// ---- in the folders that were added, in this order.

MAXAPI_EXPORT void SetPatcherFolder(const std::filesystem::path& folder);
MAXAPI_EXPORT void AddSearchFolder(const std::filesystem::path& folder);

/// Sets the folder of the classes that are made from now on (class_getpath).
MAXAPI_EXPORT void SetModuleFolder(const std::filesystem::path& folder);

enum class Dialog : std::uint8_t { Open, SaveAs };

/// Sets the answer to the next dialog of this kind; none: cancelled. Later dialogs are cancelled.
MAXAPI_EXPORT void AnswerDialog(Dialog dialog, std::optional<std::filesystem::path> file);

// ---- Standalone programs

/// A file that an object wants to find in a standalone program.
struct CarriedFile {
    std::string name;        // without its folder
    bool isInSupportFolder;  // on disk; else in the collective, from which only Max reads
};

/// Calls the object's method `fileusage`, as Max does when it builds a standalone program. Posts a
/// bug for a file that does not exist. @return nothing when the object has no such method
MAXAPI_EXPORT std::vector<CarriedFile> CarriedFiles(t_object* object);

// ---- Watching

/// @param attribute  the one that was changed, null for any message but attr_modified
using WatchSink = std::function<void(t_symbol* message, t_symbol* attribute)>;

/// Attaches a client, as an inspector or a pattr does; free it with object_free.
MAXAPI_EXPORT t_object* Watch(t_object* object, WatchSink sink);

/// Is told of each call of gensym, of object_post and its kin, of outlets and of object_notify
/// before it does anything, with the function's name.
/// Thread: that of the caller
using CallWatch = void (*)(const char* function);
MAXAPI_EXPORT void WatchCalls(CallWatch watch);  // null: nobody

// ---- Faults

/// Makes the n-th call of an API function from now on fail, with this error code if it returns one.
/// @param n  0: cancels an earlier call
/// @return whether an earlier planned failure had not happened yet
MAXAPI_EXPORT bool FailCall(std::string_view function, unsigned n, t_max_err code);

/// The numbers of live objects and of allocated sysmem blocks.
MAXAPI_EXPORT std::size_t CountObjects();
MAXAPI_EXPORT std::size_t CountBlocks();

/// Reports writes to freed memory that have not been noticed yet, and releases all records of freed
/// objects and blocks, so that allocation counts before and after differ only by what modules keep.
MAXAPI_EXPORT void CheckFreedMemory();

// ---- Text of atoms

/// Text that reads back to the same atoms: floats with the shortest digits that give the same
/// 32-bit value (`1` for 1.0), symbols quoted where they hold blanks or quotes, are empty or read
/// as numbers. Thread: any.
MAXAPI_EXPORT std::string AtomText(const t_atom& atom);
MAXAPI_EXPORT std::string AtomText(std::span<const t_atom> atoms);  // separated by one blank

/// Parses text as atom_setparse does: blanks separate, quoted text is one symbol, a backslash
/// escapes, `1` is a long, `1.` and `1e3` are floats, anything else is a symbol. Never fails: the
/// end of the text closes an open quote.
/// Thread: any.
MAXAPI_EXPORT std::vector<t_atom> ParseAtoms(std::string_view text);

// ---- Threads, deferred work, clocks

/// The kind of the calling thread; the thread that loaded the library is Main, others are
/// Scheduler.
/// Audio: messages while Max runs its scheduler inside the audio interrupt.  Perform: a perform
/// routine, which may neither post nor queue nor send; such calls are reported.  Module: a thread
/// that a module has made.
enum class ThreadKind : std::uint8_t { Main, Scheduler, Audio, Perform, Module };
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

/// The action of the host that caused something; the host numbers its actions from 1. Deferred work
/// (queued, or called by a clock) is caused by the action that deferred it. If there were several,
/// because work was merged while it waited or because messages of the audio interrupt were
/// collected, `first` and `last` are the smallest and the largest number of them.
struct Cause {
    int first = 0, last = 0;  // 0: none
};
/// For the calling thread. Thread: any.
MAXAPI_EXPORT void SetCause(const Cause& cause);
MAXAPI_EXPORT Cause CurrentCause();

/// Runs the work that was queued for the main thread before the call, in order. Work that this
/// queues stays for the next call.
/// @return how many functions ran
MAXAPI_EXPORT std::size_t RunDeferred();

/// RunDeferred, then all that it has set going in threads of modules: waits until these have ended,
/// runs what they have queued, and so on. So what comes of work does not depend on how long its
/// threads take. Ends after 256 turns in any case, for other threads may send work for ever.
MAXAPI_EXPORT void Settle();

/// Waits until every thread that a module has made has ended.
/// @return whether one was made since the last call.  Thread: none of these
MAXAPI_EXPORT bool WaitForThreads();

/// Advances the time of clocks and of systimer_gettime, and runs the clocks that become due, in
/// order of time, as the scheduler thread.
/// @param ms  at least 0
MAXAPI_EXPORT void AdvanceClocks(double ms);

}  // namespace HostApi
