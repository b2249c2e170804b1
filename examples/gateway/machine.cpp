#include "machine.h"

#include <fcntl.h>

Kalvo_String ReadText(const char* path) {
  Kalvo_String text;
  Kalvo_FileStream file;
  if (file.Open(path, O_RDONLY, 0) < 0) return text;
  char block[4096];
  for (int n; (n = file.Read(block, sizeof(block))) > 0;) text.memcat(block, n);
  return text;
}

void SplitWords(Kalvo_String* line, Kalvo_StringArray* words) {
  line->replace('\t', ' ');
  line->Trim();
  words->Split(line->c_str(), ' ', 1);
}

Kalvo_String SystemName() {
  Kalvo_StringArray lines;
  lines.Split(ReadText("/etc/os-release").c_str(), '\n', 1);
  for (int i = 0; i < lines.GetSize(); ++i) {
    Kalvo_StringArray parts;
    parts.Split(lines[i], '=', 0);
    if (parts.GetSize() != 2 || *parts[0] != "PRETTY_NAME") continue;
    parts[1]->replace_all(0, "\"", "");
    return *parts[1];
  }
  return Kalvo_String("an unknown system");
}
