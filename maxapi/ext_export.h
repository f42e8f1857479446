// SPDX-License-Identifier: MIT
// How the functions of the API are declared: imported by a module, exported by the libraries that
// stand in for Max's own (these define MAXAPI_BUILD or MAXAUDIO_BUILD while they are compiled).
#pragma once

#if defined(_WIN32)
#define MAX_EXPORTED __declspec(dllexport)
#elif defined(__GNUC__)
#define MAX_EXPORTED [[gnu::visibility("default")]]
#else
#define MAX_EXPORTED
#endif

#if defined(MAXAPI_BUILD)
#define MAXAPI_EXPORT MAX_EXPORTED
#else
#define MAXAPI_EXPORT
#endif

#if defined(MAXAUDIO_BUILD)
#define MAXAUDIO_EXPORT MAX_EXPORTED
#else
#define MAXAUDIO_EXPORT
#endif
