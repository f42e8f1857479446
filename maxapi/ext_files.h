// SPDX-License-Identifier: MIT
// Paths, the search path, dialogs.
//
// A file is a path id (0 or less: a folder) and a name. Text is UTF-8 with forward slashes. Most
// functions give 0 when they succeed. Buffers for full paths hold MAX_PATH_CHARS, for names
// MAX_FILENAME_CHARS.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

// Searches a name, or a full path. WRITES into name (a full path is cut to the file name): never
// hand it the text of a symbol. No types: any file.
MAXAPI_EXPORT short locatefile_extended(
    char* name, short* path, t_fourcc* type, const t_fourcc* types, short ntypes);

// The full path; path_topathname only of a file that exists, path_topotentialname with check 0 of
// any.
MAXAPI_EXPORT short path_topathname(const short path, const char* file, char* out);
MAXAPI_EXPORT short path_topotentialname(const short path,
                                         const char* file,
                                         char* out,
                                         short check);
MAXAPI_EXPORT short path_frompathname(const char* full, short* path, char* file);
MAXAPI_EXPORT short path_nameconform(const char* src, char* dst, max_long style, max_long type);
MAXAPI_EXPORT t_max_err path_toabsolutesystempath(const short path, const char* file, char* out);
MAXAPI_EXPORT max_long path_exists(short path, const char* file);  // 1 = yes
MAXAPI_EXPORT short path_getdefault();

// Dialogs: 0 when the user chose. From the main thread and out of the queue (defer_low) only.
// saveasdialog_extended: name is the name proposed, and the one chosen.
MAXAPI_EXPORT short open_dialog(
    char* name, short* path, t_fourcc* type, t_fourcc* types, short ntypes);
MAXAPI_EXPORT short saveasdialog_extended(
    char* name, short* path, t_fourcc* type, t_fourcc* types, short ntypes);
MAXAPI_EXPORT void open_promptset(const char* text);
MAXAPI_EXPORT void saveas_promptset(const char* text);

// For the fileusage method, within its call: names a file that a standalone program must contain.
// w: what the method was given. flags: 1 puts the file into the program's support folder, on disk;
// 0 into its collective, from which only Max's own functions read.
MAXAPI_EXPORT void fileusage_addfile(void* w, max_long flags, const char* name, short path);

}  // extern "C"
