// SPDX-License-Identifier: MIT
// Clients of the host: they get the notifications that an inspector or a pattr object would get.
#include "ApiObjects.h"
#include "HostBridge.h"

namespace HostApi {
namespace {

struct Watcher {
    t_object ob;
    WatchSink sink;

    static Watcher* FromObject(t_object* object) { return reinterpret_cast<Watcher*>(object); }
};

t_max_err Notify(Watcher* watcher, t_symbol*, t_symbol* message, void*, void* data) {
    t_symbol* attribute = nullptr;
    if (message == gensym("attr_modified"))
        attribute = static_cast<t_symbol*>(object_method_imp(data, gensym("getname"), nullptr,
                                                             nullptr, nullptr, nullptr, nullptr,
                                                             nullptr, nullptr, nullptr));
    watcher->sink(message, attribute);
    return MAX_ERR_NONE;
}

Class& WatcherClass() {
    static Class& type = []() -> Class& {
        Class& made = OwnClass<Watcher>("watcher");
        class_addmethod(&made, MaxApi::ToMethod(Notify), "notify", A_CANT, 0);
        return made;
    }();
    return type;
}

}  // namespace

t_object* Watch(t_object* object, WatchSink sink) {
    auto* const watcher = new Watcher{{}, std::move(sink)};
    AdoptObject(&watcher->ob, WatcherClass());
    object_attach_byptr_register(watcher, object, gensym("box"));
    return &watcher->ob;
}

}  // namespace HostApi
