// Files: buffered streams, what the file system knows about a file, listing and deleting,
// copying and moving with a check.
//
//   Kalvo_FileStream out;
//   if (out.Open("report/today.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644) < 0) {
//     return out.GetErrorCode();
//   }
//   out.Printf("%s: %d files\n", "today", 12);
//   out.Close();
//
//   Kalvo_FindFiles logs;
//   logs.Find("log/*.log");
//   logs.QSortByModifyTime();
//   while (Kalvo_FileItem* log = logs.FindNext()) std::puts(log->GetName());
//
// In paths that are handed in, `/` and `\` both separate components. Names that are found in
// a directory are taken as they are, whatever bytes they hold. Errors are told by results;
// GetErrorCode of a stream tells why its last operation failed.
//
// Each object belongs to one thread at a time. The static operations and the functions may be
// called from any thread; relative paths depend on the process's current directory.

#ifndef KALVOBASE_FILE_H_
#define KALVOBASE_FILE_H_

#include <cstdarg>

#include "kalvobase/types.h"

class Kalvo_String;
class MP_FileItem;
class MP_FileStream;
class MP_FindFiles;

// A buffered stream on a file descriptor, with a buffer of 8,192 bytes for each direction.
//
// What is written goes to the file when the buffer is full, after a line feed that is put as
// a byte of its own or stands in the format of Printf, with Write(), Seek, Detach and Close.
// To write many formatted lines fast, let their line feeds be arguments:
// Printf("%d%s", i, "\n"). What cannot be written then is lost: the buffer is empty after a
// failure, and there is no second attempt.
//
// Numbers lie in the file as the host has them in memory. No signal of a broken pipe is
// raised.
//
// A copy shares the stream of its source with no count of users: of the handles that share
// one exactly one may be destroyed, and after that the others must not be used.
class KALVO_API Kalvo_FileStream {
 public:
  // Without a file.
  Kalvo_FileStream();
  Kalvo_FileStream(const Kalvo_FileStream& other);
  Kalvo_FileStream& operator=(const Kalvo_FileStream& other);

  // As Close.
  virtual ~Kalvo_FileStream();

  // Opens a file with the flags and permission bits of the system's open. With O_RDONLY alone
  // the stream can only read; with anything else it gets both directions, whether or not the
  // flags allow both, and with O_CREAT missing directories are made. A directory is not
  // opened. Returns the descriptor; negative, with the stream as it was, on failure. A file
  // that is open already is not closed: call Close first.
  int Open(const char* name, int flags, int permission);

  // Takes an open descriptor, which Close will close. `mode` 0: only to read, 1: only to
  // write, any other: both. What was in the buffers is dropped.
  virtual void Attach(int fd, int mode);

  // Writes out what is in the buffer, drops what was read ahead, and lets go of the
  // descriptor without closing it.
  void Detach();

  // The same, and closes it. Does nothing without a file.
  void Close();

  // Writes out what is in the buffer, drops what was read ahead, and moves the position as
  // the system's lseek. The new position, or -1. The position is that of the descriptor,
  // which is ahead of what was read by up to a buffer: SEEK_CUR counts from there.
  long Seek(int offset, int whence);

  // 1 if there is a descriptor, else 0.
  int IsOpen();

  // The descriptor, or -1.
  int GetHandle();

  // The current errno.
  int GetErrorCode();

  // --- Reading ------------------------------------------------------------------
  //
  // -2 without the reading direction.

  // The byte's value plus 1, so 1 to 256; 0 at the end of the file, negative on failure.
  int Read(char& c);
  int Read(unsigned char& c);

  // Numbers of 2 bytes; of 4 bytes, `long` included; of 8 bytes. How many bytes, or -1 if
  // one is missing.
  int Read(short& v);
  int Read(unsigned short& v);
  int Read(int& v);
  int Read(unsigned int& v);
  int Read(long& v);
  int Read(unsigned long& v);
  int Read(float& v);
  int Read(double& v);
  int Read(long double& v);

  // Up to `n` bytes. Their number, smaller only at the end of the file; negative on failure.
  int Read(char* buf, int n);

  // The next line as a text that is good until the next ReadLine; null behind the last, and
  // without the reading direction. `strip` not 0 leaves out its CR and LF bytes. With
  // `maxLength` other than -1 a line of more bytes than that gives null as soon as they were
  // read, and the next call goes on behind them; so does one that no string can hold.
  const char* ReadLine(int strip, int maxLength);

  // --- Writing ------------------------------------------------------------------
  //
  // -2 without the writing direction, unless told otherwise.

  // Numbers of 2, of 4 and of 8 bytes, as they are read. How many bytes, or -1.
  int Write(short v);
  int Write(unsigned short v);
  int Write(int v);
  int Write(unsigned int v);
  int Write(long v);
  int Write(unsigned long v);
  int Write(float v);
  int Write(double v);
  int Write(long double v);

  // Puts `c` `n` times. 1, or negative on failure; an `n` below 1 is returned.
  int Write(char c, int n);
  int Write(unsigned char c, int n);

  // Writes `n` bytes; a negative `n` means the text `p`. Their number, 0 for null, negative
  // on failure. Line feeds among them do not empty the buffer.
  int Write(const char* p, int n);

  // Writes out what is in the buffer. Above 0, or negative on failure; -1 without the writing
  // direction.
  int Write();

  // As Kalvo_String::sprintf. The number of bytes; -1 on failure, and without a file or the
  // writing direction.
  int Printf(const char* format, ...);
  int VPrintf(const char* format, va_list args);

  // The last byte that was written; 0 without the writing direction.
  unsigned char GetLastWriteChar();

 private:
  MP_FileStream* impl_;
};

// A file or directory as it was when it was looked at: the parts of its name, and its status.
// Of a symbolic link it tells about the target.
//
// For an item that does not exist texts are "" and numbers -1. Texts are good until the next
// AttachFile.
//
// A copy shares the item of its source with no count of users: of the handles that share one
// exactly one may be destroyed, and after that the others must not be used.
class KALVO_API Kalvo_FileItem {
 public:
  // Does not exist.
  Kalvo_FileItem();
  Kalvo_FileItem(const Kalvo_FileItem& other);
  Kalvo_FileItem& operator=(const Kalvo_FileItem& other);
  virtual ~Kalvo_FileItem();

  // Looks at a file or directory. Blanks around the name are no part of it.
  void AttachFile(const char* name);

  // 1 or 0.
  int IsExist();
  int IsDir();

  // Deletes the file, or the directory if it is empty: what has the name now, also if the item
  // was found to have vanished before. Of a symbolic link, the link. The item stays as it is.
  void Delete();

  // The absolute name: what was attached, behind the current directory if that was relative.
  const char* GetFullPathName2();

  // The same without the last component and its separator.
  const char* GetPath();

  // The last component; its part in front of the last dot; its part behind it. Without a dot
  // the suffix is empty.
  const char* GetName();
  const char* GetBaseName();
  const char* GetSuffix();

  // In bytes.
  long GetFileSize();

  // In seconds since 1970. The time of creation is that of the last change of the status where
  // the file system keeps none.
  long GetFileAccessTime();
  long GetFileModifyTime();
  long GetFileCreateTime();

  // Looks at the file again.
  void RenewFileInfo();

  // 1 if size or time of modification are not those of the last AttachFile or RenewFileInfo,
  // else 0; -1 if the item does not exist, or has vanished.
  int IsModifiedSinceLastCheck();

  // --- The file system ----------------------------------------------------------

  // Makes a directory and its parents. `mode` is not used.
  static void CreateDir(const char* path, int mode);

  // Makes the parent directories and opens a file for reading and writing, making it if it is
  // missing. The descriptor, or a negative number.
  static int SafeOpenFile(const char* path, int mode);

  // Stores the absolute form of a path, without ".", "..", doubled or trailing separators, and
  // returns its text. A path with a drive letter, or of a network share, gets backslashes
  // and is appended to *out; any other gets the separator of the system and replaces it. A
  // null or empty path leaves *out as it is.
  static const char* GetRealPathName(const char* path, Kalvo_String& out);

  // Deletes the files of a directory whose names match a pattern (see Kalvo_FindFiles), with
  // `recursive` not 0 in all directories below it as well; directories stay. A pattern may begin
  // with a sub-directory: "old/*.log". Symbolic links are deleted, not followed. Returns how many
  // files matched. 0, with nothing touched, for a null or empty path, for the root of the file
  // system, and for a pattern that leads out of the directory or names no files.
  static int DeleteFiles(const char* dir, const char* pattern, int recursive);

  // Deletes a directory with all it holds. Symbolic links in it are deleted, not followed.
  // 1 if it is gone. 0 if not, and, with nothing touched, for a null or empty path, a symbolic
  // link and the root of the file system.
  static int DeleteTree(const char* dir);

  // The size of the volume that holds `path`, and what is free on it, in blocks of
  // `blockSize` bytes, which is always 512. 1, or 0 on failure.
  static int GetDiskInfo(const char* path, long long& blockSize, long long& totalBlocks,
                         long long& freeBlocks);

 private:
  friend class MP_FileItem;

  MP_FileItem* impl_;
};

// Lists a directory. The result is what was there at the moment of Find, with a cursor on it.
//
// In patterns `?` is any one byte and `*` any number of bytes, also none; A to Z match a to z.
// "*.*" needs a dot in the name.
//
// The items belong to the object and are good until FindFree, the next Find or its end. A copy
// shares the result of its source with no count of users: of the handles that share one
// exactly one may be destroyed, and after that the others must not be used.
class KALVO_API Kalvo_FindFiles {
 public:
  Kalvo_FindFiles();
  Kalvo_FindFiles(const Kalvo_FindFiles& other);
  Kalvo_FindFiles& operator=(const Kalvo_FindFiles& other);
  virtual ~Kalvo_FindFiles();

  // Lists the directory `path`, by the pattern "*.*", or, if `path` is none, what stands
  // before its last separator, by the pattern behind it; a pattern alone means the root.
  // Directories are among the results whatever the pattern, "." and ".." are not. Returns
  // the number of results; 0 if the directory cannot be read.
  unsigned long Find(const char* path);

  // Move the cursor and give the item, or null if there is none. FindNext and FindPrev begin
  // at the first item, at the start as well as after they gave null.
  Kalvo_FileItem* FindFirst();
  Kalvo_FileItem* FindTail();
  Kalvo_FileItem* FindNext();
  Kalvo_FileItem* FindPrev();

  unsigned long GetResultCount();

  // Lets go of the results.
  void FindFree();

  // Sort, smallest first; the cursor stays on its item. Names compare byte by byte. The same
  // sort twice in a row does nothing, FindFree in between or not.
  void QSortByName();
  void QSortBysize();
  void QSortByModifyTime();
  void QSortByCreateTime();

 private:
  MP_FindFiles* impl_;
};

extern "C" {

// Copies a file, making the directories of the destination. If the destination exists,
// `mode` 0 refuses, 1 replaces it, any other appends to it. Returns the number of bytes
// copied (the largest int if it is larger), or
//   -1  the destination exists and `mode` is 0, or the two are one file
//   -2  not as many bytes could be written as the source has; the destination has been
//       removed, also one that was appended to. It is left alone if it, or the source, could
//       not be opened at all.
//   -9  there is no source
KALVO_API int Kalvo_FileSafeCopy(const char* source, const char* destination, int mode);

// Renames a file, making the directories of the destination. If the destination exists,
// `mode` 0 refuses, 1 replaces it, any other appends to it and removes the source. Returns the
// size of the destination, when appending that of the source (the largest int if it is
// larger). A destination that is another name of the source, a hard link or a symbolic link to
// it, is replaced by it. Or returns
//   -1  the destination exists and `mode` is 0, the two are the same name, or the source is a
//       symbolic link to the same file
//   -2  replacing: the destination has been removed, and then the renaming failed
//   -3  the renaming failed, as it does from one volume to another
//   -4  appending: the source has vanished
//   -5  appending: as -2 of Kalvo_FileSafeCopy; the source is still there
//   -9  there is no source
KALVO_API int Kalvo_FileSafeRename(const char* source, const char* destination, int mode);
}

#endif  // KALVOBASE_FILE_H_
