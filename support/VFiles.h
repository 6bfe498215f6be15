// File names, whole-file reading and writing, directories, sizes as text, and the log of
// result-file work. File names are taken apart at "\\" and at "/"; the extension is what follows
// the last point. Nothing raises: failures show as -1, 0, false or an empty text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace VCppLib {

// The log of result-file work: entries go to logFileName while logLevel is 0 or more.
inline std::string logFileName;
inline int32_t logLevel = 0;

// Time stamp (VTimeStampFmt, local time), a blank and text, as one line appended to the log file.
// Nothing is written while no log file is set.
void logMessage(std::string text);
// Makes path the log file. keepOld: an existing file of that name is renamed to the name with the
// time stamp inserted before the extension; otherwise an existing file is removed.
void openLog(std::string path, bool keepOld);

// The whole file as one string; empty when the file cannot be opened (or is a directory).
std::string readFileToString(std::string path);
// Writes (append: appends) text; 0, or -1 when the file could not be opened.
int32_t writeTextFile(std::string path, std::string text, bool append = false);
// True when path names a file that can be opened for reading (directories are not files).
bool fileExists(std::string path);
// st_mtime, 0 on failure.
int64_t fileModTime(std::string path);
// st_ctime, 0 on failure (on this platform the last status change, not the creation).
int64_t fileCreateTime(std::string path);
// Size in bytes, 0 on failure; larger files than 2 GiB give the largest int32.
int32_t fileSize(std::string path);

// Up to the last separator, without it; empty if none.
std::string dirPart(std::string path);
// Behind the last separator; the whole path if none.
std::string fileName(std::string path);
// Behind the last separator and up to the last point (the whole name when it has no point).
std::string baseName(std::string path);
// Behind the last point; the whole path if there is none.
std::string extPart(std::string path);
// What follows the last point replaced by ext; without a point, or with the point last, "." + ext is added.
std::string setExt(std::string path, std::string ext);
// "run.nc", "_1" -> "run_1.nc"; unchanged when the last point is at index 0 or there is none.
std::string insertBeforeExt(std::string path, std::string tag);
// dir + "\\" unless dir is empty or already ends with "\\" or "/".
std::string addBackslash(std::string dir);

// Names of the directories in dir that match pattern (shell wildcards; "*.*" matches every name),
// sorted, without "." and "..". An empty dir is the current directory.
std::vector<std::string> listDirs(std::string dir, std::string pattern = "*.*");
bool isDir(std::string path);
// True when made, and also when it was there already.
bool makeDir(std::string path);
void changeDir(std::string path);
// The current working directory; empty on failure.
std::string currentDir();
// The result of rename: 0 on success.
int32_t renameFile(std::string from, std::string to);
// Copies in blocks of 512 bytes; nothing happens when the source cannot be opened.
void copyFile(std::string from, std::string to);
// remove's result when the file can be opened for reading, otherwise -1 and nothing happens.
int32_t deleteFile(std::string path);

// "1023 bytes", "1 KB", "1 MB": the whole number of the largest unit that keeps it at 1 or more.
std::string sizeToStr(int32_t bytes);
// "1.5 KB" -> 1536, "10" -> 10; suffixes kb, mb, gb (powers of 1024), tb = 1099512000000 and
// pb = 1125900000000000 (rounded decimals), blanks and case ignored. Negative gives 0.
uint64_t parseSize(std::string s);

// Gives standard output a zeroed buffer of n bytes, fully buffered, and captures what is printed
// to it (also through std::cout) until captureStdoutEnd; it does not reach the terminal. The caller
// deletes the buffer with delete[] after the end call. nullptr (and standard output untouched) for
// n < 2 or while a capture runs.
char* captureStdoutStart(int32_t n);
// Prints the marker "#cpf#", makes standard output unbuffered, puts what was printed (at most n-1
// bytes) into buffer and returns it up to the marker.
std::string captureStdoutEnd(char* buffer);

}  // namespace VCppLib
