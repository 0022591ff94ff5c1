/// @file
/// Files and directories of the board. Every function may be called from every thread; one open file must not be used
/// by two threads at once. Results are 0 on success, else an errno value, unless said.
#pragma once

#include "GloTypes.h"

/// An open file.
struct TAaFile;

extern "C" {

/// Opens a file.
/// @param mode "r" to read, "w" to replace. A file opened with "w" replaces what was there whole or not at all: the old
///             content stays until AaFileClose has written, synced and renamed the new one.
/// @return the file, closed by the caller with AaFileClose; null when it cannot be opened
TAaFile* AaFileOpen(const char* path, const char* mode);
/// Closes a file; after "w" this is what puts the new content in place. The file is gone also when it fails.
/// @return 0, else an errno value: the old content is still there then
i32 AaFileClose(TAaFile* file);
/// Reads a line, at most @p size - 1 bytes of it, with its line end.
/// @return @p buffer; null at the end of the file or on an error, and *buffer is then the empty text
char* AaFileReadLine(char* buffer, u32 size, TAaFile* file);
/// Writes @p count items of @p size bytes.
/// @return the number of items taken; fewer than @p count after a write error, and AaFileClose then fails too
u32 AaFileWrite(const void* data, u32 size, u32 count, TAaFile* file);

/// Copies a file; @p target is replaced whole or not at all. Nobody may read the copy who may not read @p source. A
/// platform may name the folders whose files may be copied: EACCES for others.
i32 AaFileCopy(const char* source, const char* target);
/// Removes a file.
i32 AaFileRemove(const char* path);
/// @return whether @p path names a regular file
TBoolean AaFileExists(const char* path);
/// @return whether @p path names a directory
TBoolean AaFileDirExists(const char* path);
/// Creates a directory and the missing ones above it.
i32 AaFileCreateDir(const char* path);
/// Lists the names in a directory, without "." and "..", in byte order.
/// @param names out: the array, released by the caller with AaFileFreeListDirArray; null when empty or failed
/// @param count out: number of names
i32 AaFileListDir(const char* path, char*** names, u32* count);
/// Releases what AaFileListDir gave. Null is ignored.
void AaFileFreeListDirArray(char** names, u32 count);

}  // extern "C"
