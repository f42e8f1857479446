// SPDX-License-Identifier: MIT
// sysmem_... of the API: blocks that know their size, and handles.
#include "ext_atoms.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// Stands in front of every block; 16 bytes keep the block as aligned as malloc's.
struct alignas(16) Header {
    t_ptr_size size;
};

constexpr t_ptr_size kLargest = ~t_ptr_size{0} - sizeof(Header);

Header* HeaderOf(void* block) { return static_cast<Header*>(block) - 1; }

t_ptr BlockOf(Header* header) { return reinterpret_cast<t_ptr>(header + 1); }

}  // namespace

t_ptr sysmem_newptr(t_ptr_size size) {
    if (size > kLargest) return nullptr;
    auto* const header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (!header) return nullptr;
    header->size = size;
    return BlockOf(header);
}

t_ptr sysmem_newptrclear(t_ptr_size size) {
    const t_ptr block = sysmem_newptr(size);
    if (block) std::memset(block, 0, size);
    return block;
}

t_ptr sysmem_resizeptr(void* p, t_ptr_size size) {
    if (!p) return sysmem_newptr(size);
    if (size > kLargest) return nullptr;
    auto* const header = static_cast<Header*>(std::realloc(HeaderOf(p), sizeof(Header) + size));
    if (!header) return nullptr;
    header->size = size;
    return BlockOf(header);
}

t_ptr sysmem_resizeptrclear(void* p, t_ptr_size size) {
    const t_ptr_size old = sysmem_ptrsize(p);
    const t_ptr block = sysmem_resizeptr(p, size);
    if (block && size > old) std::memset(block + old, 0, size - old);
    return block;
}

t_ptr_size sysmem_ptrsize(void* p) { return p ? HeaderOf(p)->size : 0; }

void sysmem_freeptr(void* p) {
    if (p) std::free(HeaderOf(p));
}

void sysmem_copyptr(const void* src, void* dst, t_ptr_size bytes) {
    if (bytes > 0) std::memmove(dst, src, bytes);
}

t_handle sysmem_newhandle(t_ptr_size size) {
    const auto handle = reinterpret_cast<t_handle>(sysmem_newptr(sizeof(char*)));
    if (handle) *handle = sysmem_newptr(size);
    return handle;
}

t_handle sysmem_newhandleclear(t_ptr_size size) {
    const t_handle handle = sysmem_newhandle(size);
    if (handle && *handle) std::memset(*handle, 0, size);
    return handle;
}

t_max_err sysmem_resizehandle(t_handle h, t_ptr_size size) {
    const t_ptr block = h ? sysmem_resizeptr(*h, size) : nullptr;
    if (!block) return MAX_ERR_OUT_OF_MEM;
    *h = block;
    return MAX_ERR_NONE;
}

t_ptr_size sysmem_handlesize(t_handle h) { return h ? sysmem_ptrsize(*h) : 0; }

void sysmem_freehandle(t_handle h) {
    if (h) sysmem_freeptr(*h);
    sysmem_freeptr(static_cast<void*>(h));
}
