// SPDX-License-Identifier: MIT
// Console rows of modules: object_post and its kin.
#include "ApiCallWatch.h"
#include "ApiFaults.h"
#include "ApiObjects.h"
#include "ApiReports.h"

#include <cstdarg>
#include <cstdio>

namespace HostApi {
namespace {

void Post(PostKind kind, t_object* object, const char* format, std::va_list arguments) {
    NoteCall("object_post");
    RefusePerform("object_post");
    FindObject(object);  // reports the use of a freed object
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);

    WriteRow(kind, text, object);
}

}  // namespace
}  // namespace HostApi

using namespace HostApi;

void object_post(t_object* x, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    Post(PostKind::Post, x, fmt, arguments);
    va_end(arguments);
}

void object_warn(t_object* x, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    Post(PostKind::Warning, x, fmt, arguments);
    va_end(arguments);
}

void object_error(t_object* x, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    Post(PostKind::Error, x, fmt, arguments);
    va_end(arguments);
}

void object_bug(t_object* x, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    Post(PostKind::Bug, x, fmt, arguments);
    va_end(arguments);
}
