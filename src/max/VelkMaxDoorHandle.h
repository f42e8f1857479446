// SPDX-License-Identifier: MIT
// What clocks and queue elements know of a door; for the files of the door only.
#pragma once

#include "max/VelkMaxDoor.h"

#include <deque>
#include <vector>

namespace VelkMax {

// A clock may be about to call its function while its door is closed. So clocks know a handle that
// is never freed: the late one finds no door, or at worst another object's, which then does a
// little earlier what it put off.
struct Door::Handle {
    tav::ControlLock lock;
    Door* door TAV_GUARDED_BY(lock) = nullptr;

    struct Pool {
        tav::ControlLock lock;
        std::deque<Handle> handles TAV_GUARDED_BY(lock);
        std::vector<Handle*> free TAV_GUARDED_BY(lock);
    };
    static Pool& ThePool() {
        static auto& pool = *new Pool;  // clocks may ring while the process ends
        return pool;
    }

    static Handle& Of(Door& door) {
        Pool& pool = ThePool();
        const tav::ControlGuard guard(pool.lock);
        if (pool.free.empty()) {
            pool.free.reserve(pool.handles.size() + 1);  // so that Release needs no memory
            pool.free.push_back(&pool.handles.emplace_back());
        }
        Handle& handle = *pool.free.back();
        pool.free.pop_back();
        const tav::ControlGuard own(handle.lock);
        handle.door = &door;
        return handle;
    }
    void Release() noexcept {
        {
            const tav::ControlGuard own(lock);
            door = nullptr;
        }
        Pool& pool = ThePool();
        const tav::ControlGuard guard(pool.lock);
        pool.free.push_back(this);
    }

    /// The door, which stands as long as its visitors are counted; null when it has closed.
    Door* Knock() noexcept {
        const tav::ControlGuard own(lock);
        if (door != nullptr) ++door->visitors_;
        return door;
    }
};

}  // namespace VelkMax
