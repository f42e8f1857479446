// SPDX-License-Identifier: MIT
// sysmem_... of the API: blocks that know their size, and handles.
//
// Every block lies between two guard values, and a freed block is kept for some time, filled with a
// pattern, before its memory is reused. So it is reported when a module writes beyond a block,
// frees it twice or writes to it after freeing it.
#include "ApiMemory.h"

#include "ApiFaults.h"
#include "ApiReports.h"
#include "HostBridge.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>

namespace HostApi {
namespace {

enum class BlockState : std::uint64_t { Live = 0x6C6976655F626C6B, Freed = 0x66726565645F5F62 };

// Precedes every block; its size is a multiple of 16 bytes, so that the block is aligned as by
// malloc.
struct alignas(16) Header {
    t_ptr_size size;
    BlockState state;
};

constexpr std::array<unsigned char, 16> kEndMark{0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5,
                                                 0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5, 0xE5};
constexpr t_ptr_size kLargest = ~t_ptr_size{0} - sizeof(Header) - sizeof(kEndMark);
constexpr int kFreedByte = 0xDD;
constexpr std::size_t kMostWaiting = 512;  // largest number of freed blocks that are kept
constexpr t_ptr_size kMostWaitingBytes = 8 << 20;

struct Blocks {
    std::mutex mutex;
    std::deque<Header*> waiting;  // freed, the oldest first
    t_ptr_size waitingBytes = 0;
    std::size_t live = 0;
};

Blocks& TheBlocks() {
    static auto& blocks = *new Blocks;
    return blocks;
}

Header* HeaderOf(void* block) { return static_cast<Header*>(block) - 1; }

t_ptr BlockOf(Header* header) { return reinterpret_cast<t_ptr>(header + 1); }

/// Whether the block is valid; reports the reason if not.
bool CheckBlock(const Header* header, const char* function) {
    if (header->state != BlockState::Live) {
        const bool wasFreed = header->state == BlockState::Freed;
        ReportBug(std::string(function) + (wasFreed ? ": the memory has been freed already"
                                                    : ": the memory is not the API's"));
        return false;
    }
    const auto* const end = reinterpret_cast<const char*>(header + 1) + header->size;
    if (std::memcmp(end, kEndMark.data(), kEndMark.size()) != 0)
        ReportBug(std::string(function) + ": " + std::to_string(header->size) +
                  " bytes were written beyond their end");
    return true;
}

/// Checks a freed block for writes and returns its memory to the system.
void LetGo(Header* header) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(header + 1);
    if (!std::all_of(bytes, bytes + header->size, [](unsigned char b) { return b == kFreedByte; }))
        ReportBug("sysmem_freeptr: " + std::to_string(header->size) +
                  " bytes were written to after they were freed");
    std::free(header);
}

void Retire(Header* header) {
    header->state = BlockState::Freed;
    std::memset(header + 1, kFreedByte, header->size);
    Blocks& blocks = TheBlocks();
    std::vector<Header*> leaving;
    {
        const std::lock_guard lock(blocks.mutex);
        --blocks.live;
        blocks.waiting.push_back(header);
        blocks.waitingBytes += header->size;
        while (blocks.waiting.size() > kMostWaiting || blocks.waitingBytes > kMostWaitingBytes) {
            leaving.push_back(blocks.waiting.front());
            blocks.waitingBytes -= leaving.back()->size;
            blocks.waiting.pop_front();
        }
    }
    for (Header* old : leaving) LetGo(old);
}

t_ptr NewBlock(t_ptr_size size) {
    if (size > kLargest) return nullptr;
    auto* const header =
        static_cast<Header*>(std::malloc(sizeof(Header) + size + sizeof(kEndMark)));
    if (!header) return nullptr;
    *header = {size, BlockState::Live};
    std::memcpy(BlockOf(header) + size, kEndMark.data(), kEndMark.size());
    Blocks& blocks = TheBlocks();
    const std::lock_guard lock(blocks.mutex);
    ++blocks.live;
    return BlockOf(header);
}

}  // namespace

std::size_t CountBlocks() {
    Blocks& blocks = TheBlocks();
    const std::lock_guard lock(blocks.mutex);
    return blocks.live;
}

void ReleaseFreedBlocks() {
    Blocks& blocks = TheBlocks();
    std::deque<Header*> leaving;
    {
        const std::lock_guard lock(blocks.mutex);
        leaving.swap(blocks.waiting);
        blocks.waitingBytes = 0;
    }
    for (Header* old : leaving) LetGo(old);
}

}  // namespace HostApi

using namespace HostApi;

t_ptr sysmem_newptr(t_ptr_size size) {
    RefusePerform("sysmem_newptr");
    return InjectedFailure("sysmem_newptr") ? nullptr : NewBlock(size);
}

t_ptr sysmem_newptrclear(t_ptr_size size) {
    const t_ptr block = sysmem_newptr(size);
    if (block) std::memset(block, 0, size);
    return block;
}

// The block always moves, so that the use of an old pointer to it is noticed.
t_ptr sysmem_resizeptr(void* p, t_ptr_size size) {
    if (!p) return sysmem_newptr(size);
    RefusePerform("sysmem_resizeptr");
    if (InjectedFailure("sysmem_resizeptr")) return nullptr;
    if (!CheckBlock(HeaderOf(p), "sysmem_resizeptr")) return nullptr;
    const t_ptr block = NewBlock(size);
    if (!block) return nullptr;
    std::memcpy(block, p, std::min(size, HeaderOf(p)->size));
    Retire(HeaderOf(p));
    return block;
}

t_ptr sysmem_resizeptrclear(void* p, t_ptr_size size) {
    const t_ptr_size old = sysmem_ptrsize(p);
    const t_ptr block = sysmem_resizeptr(p, size);
    if (block && size > old) std::memset(block + old, 0, size - old);
    return block;
}

t_ptr_size sysmem_ptrsize(void* p) {
    return p && CheckBlock(HeaderOf(p), "sysmem_ptrsize") ? HeaderOf(p)->size : 0;
}

void sysmem_freeptr(void* p) {
    RefusePerform("sysmem_freeptr");
    if (p && CheckBlock(HeaderOf(p), "sysmem_freeptr")) Retire(HeaderOf(p));
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
