// Kalvo_XIni: INI documents with nested sections, which keep their comments.
//
//  # when to speak up
//  [thresholds]
//          <memory>
//                  warning = 80    // percent
//          </memory>
//
//   Kalvo_XIni ini("gateway.ini");
//   int warning = 0;
//   if (ini.SetSectionName("thresholds.%s", "memory") != nullptr) {
//     ini.Read("warning", &warning);
//     ini.Write("warning", warning + 5, 0);  // removes the comment behind the value
//     ini.Dump("gateway.ini");
//   }
//
// A document is read whole, worked on in memory, and written whole. Any file is a document:
// what fits no form is a comment. A `[name]` section lies at the top; a `<name>` section lies
// in the section in which it stands and ends with a closing tag, whatever that is called.
// Sections may share a name and are then told apart by an index from 0; an index beyond
// either end means the last. Text is bytes in no encoding.
//
// All work is done on the current section, the cursor. There can be none: after a failed Read,
// a null path, a path whose first part does not exist, and RemoveSection.
//
// Texts and strings that are handed out belong to the document and are good until what they
// stand for changes. One object belongs to one thread at a time.

#ifndef KALVOBASE_INI_H_
#define KALVOBASE_INI_H_

#include <cstdarg>

#include "kalvobase/types.h"

class Kalvo_String;
class MP_XIni;

// A copy made by the constructor shares the document of its source with no count of users: of
// the handles that share one exactly one may be destroyed, and after that the others must not
// be used. Assignment copies the document.
class KALVO_API Kalvo_XIni {
 public:
  // Empty, with the cursor at the top.
  Kalvo_XIni();

  // The same, and then Read(file).
  Kalvo_XIni(const char* file);

  Kalvo_XIni(const Kalvo_XIni& other);

  // Replaces the document by a copy of the other's, comments and forms included, with the
  // cursor at the top.
  Kalvo_XIni& operator=(const Kalvo_XIni& other);

  virtual ~Kalvo_XIni();

  // --- The file -----------------------------------------------------------------

  // Replaces the document by what a file holds, with the cursor at the top: 1. -1 if it
  // cannot be opened: the document is empty, and there is no current section.
  int Read(const char* file);

  // Writes the document to a file: 1, or -1 if that cannot be opened. What it held before is
  // gone; errors of writing are not told. Keys of a section stand in front of its children,
  // and sections of one name together.
  int Dump(const char* file);

  // The file of the last Read; "" if there was none.
  const char* GetFileName();

  // --- The cursor ---------------------------------------------------------------

  // Moves from the top along a path: names separated by '.', each followed by "[index]" if it
  // is not the first of its name. The path is a format as of Kalvo_String::sprintf; dots of
  // arguments separate nothing. Returns the path, with the arguments in it; null if a part
  // does not exist: the cursor is then on the last that does. A null path leaves no current
  // section, an empty one means the top; both return "".
  const char* SetSectionName(const char* path, ...);
  const char* VSetSectionName(const char* path, va_list args);

  // The path of the cursor; null if there is no current section, and "" after a path of which
  // only the first parts exist.
  const char* GetSectionName();

  // Moves to a child of the current section, or of the top if there is none. Returns the
  // path; null, with nothing moved, if there is none of that name.
  const char* ToChildSection(const char* name, int index);

  // Moves to the parent; from the top to no section, and from there to the top.
  void ToParentSection();

  void ToTopSection();

  // --- Sections and keys --------------------------------------------------------

  // Adds a <name> section to the current one or, if there is none, a [name] section to the
  // top, also if there are some of that name. The cursor stays. A name that holds a line feed
  // or the end of its tag, or begins with '/', or has blanks at its ends, does not come back
  // from a file.
  void AddSection(const char* name);

  // Removes the current section with all it holds. There is no current section then. The top
  // itself stays.
  void RemoveSection();

  // Removes a child, or, if `index` is negative, all of that name, from the current section or
  // the top.
  void RemoveChildSection(const char* name, int index);

  // Removes a key from the current section and from the top.
  void RemoveKey(const char* key);

  // These look at the current section, or at the top if there is none.

  // The number of children of a name; for null the number of names.
  int GetChildSectionCount(const char* name);

  // The names in the order in which they first came. An `i` out of range means the last; null
  // if there are no children.
  const char* GetChildSectionName(int i);

  // The number of keys and comment lines.
  int GetKVCount();

  // Walk through keys and comment lines. Null at a comment line, as at the end. Removing the
  // key that the walk is at moves it on to the next, which GetNextKeyName then passes over.
  const char* GetFirstKeyName();
  const char* GetNextKeyName();

  // The comment behind a key's value, from its slashes on, to be changed in place. Null if
  // there is no current section or no such key in it.
  Kalvo_String* GetTailComment(const char* key);

  // --- Reading ------------------------------------------------------------------
  //
  // Each looks in the current section alone: -1 if there is none; 0, with *out as it was, if
  // there is no such key; else 1. What cannot be read as a number is 0.

  // A character, as Write writes it: "\n" is a line feed, "0x41" an A.
  int Read(const char* key, char* out);
  int Read(const char* key, unsigned char* out);

  // A number that begins with 0 is hexadecimal, with or without an x. The low 16 or 32 bits.
  int Read(const char* key, short* out);
  int Read(const char* key, int* out);

  int Read(const char* key, float* out);
  int Read(const char* key, double* out);

  // Copies the value as a text, cut to `size` - 1 bytes. Returns the number of bytes in place
  // of 1. buf[0] is 0 if there is nothing to copy. The second form cuts a text that just fits,
  // or does not, one byte earlier.
  int Read(const char* key, char* buf, int size);
  int Read(const char* key, unsigned char* buf, int size);

  // The value as a text; `defaultValue` if there is no current section or no such key.
  const char* ReadString(const char* key, const char* defaultValue);

  // --- Writing ------------------------------------------------------------------
  //
  // Each sets a key of the current section: 1, or 0 if there is none. A key that is there keeps
  // its place and loses its comment, a new one goes to the end. A null or empty key adds the
  // value as a comment line. Values are not quoted. A key that looks like something else in a
  // file (it holds '=' or a line feed, begins as a comment or a section, has blanks at its
  // ends) does not come back from one.

  // A character that can be shown as itself, others as a backslash and a letter, as "\space"
  // or as a hexadecimal number.
  int Write(const char* key, char value);
  int Write(const char* key, unsigned char value);

  // With `hex` not 0 as "0x" and hexadecimal digits.
  int Write(const char* key, short value, int hex);
  int Write(const char* key, unsigned short value, int hex);
  int Write(const char* key, int value, int hex);
  int Write(const char* key, unsigned int value, int hex);
  int Write(const char* key, long value, int hex);
  int Write(const char* key, unsigned long value, int hex);

  // With six decimals.
  int Write(const char* key, float value);
  int Write(const char* key, double value);

  int Write(const char* key, const char* text);
  int Write(const char* key, const unsigned char* text);

 private:
  MP_XIni* impl_;
};

extern "C" {

// One value of one file. Each call reads the whole file; a write saves it. No call makes a file
// or a section. For reading, `section` is a path without conversions; for writing it is one
// name.

// `defaultValue` if there is no such file, section or key.
KALVO_API int Kalvo_Xini_GetPrivateProfileInt(const char* section, const char* key,
                                              int defaultValue, const char* file);

// Stores the text in buf, cut to `size` - 1 bytes, and returns its length. `defaultValue`, if
// not null, stands for it if there is no such file or section; without the key it is empty.
KALVO_API int Kalvo_Xini_GetPrivateProfileString(const char* section, const char* key,
                                                 const char* defaultValue, char* buf, int size,
                                                 const char* file);

// 1, or 0 if there is no such file or section.
KALVO_API int Kalvo_Xini_WritePrivateProfileInt(const char* section, const char* key, int value,
                                                const char* file);
KALVO_API int Kalvo_Xini_WritePrivateProfileString(const char* section, const char* key,
                                                   const char* value, const char* file);
}

#endif  // KALVOBASE_INI_H_
