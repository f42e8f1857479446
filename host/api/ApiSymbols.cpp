// SPDX-License-Identifier: MIT
// The one symbol table.
#include "ApiCallWatch.h"

#include "ext_atoms.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

struct SymbolTable {
    std::mutex mutex;
    std::unordered_map<std::string_view, t_symbol*> symbols;  // keys are the symbols' own text
};

// Symbols are never freed, so neither is their table.
SymbolTable& Table() {
    static auto& table = *new SymbolTable;
    return table;
}

}  // namespace

t_symbol* gensym(const char* name) {
    HostApi::NoteCall("gensym");
    const std::string_view text = name ? name : "";
    SymbolTable& table = Table();
    const std::lock_guard lock(table.mutex);
    if (const auto known = table.symbols.find(text); known != table.symbols.end())
        return known->second;
    auto* const copy = new char[text.size() + 1];
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return table.symbols[std::string_view(copy, text.size())] = new t_symbol{copy, nullptr};
}

t_symbol* gensym_tr(const char* name) { return gensym(name); }

t_symbol* symbol_unique() {
    static std::atomic<unsigned long long> next{1};
    std::string name = "u";
    name += std::to_string(next++);
    return gensym(name.c_str());
}

t_max_err symbolarray_sort(max_long count, t_symbol** list) {
    if (count < 0 || !list) return MAX_ERR_GENERIC;
    std::sort(list, list + count, [](const t_symbol* a, const t_symbol* b) {
        return std::strcmp(a->s_name, b->s_name) < 0;
    });
    return MAX_ERR_NONE;
}

char* strncpy_zero(char* dst, const char* src, max_long size) {
    if (size <= 0) return dst;
    const std::size_t length = std::min(std::strlen(src), static_cast<std::size_t>(size - 1));
    std::memcpy(dst, src, length);
    dst[length] = '\0';
    return dst;
}

char* strncat_zero(char* dst, const char* src, max_long size) {
    const auto used = static_cast<max_long>(std::strlen(dst));
    if (used < size) strncpy_zero(dst + used, src, size - used);
    return dst;
}

short maxversion() { return 0x865; }
