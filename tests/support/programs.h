// What programs that are not ours find in capture files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// What the command writes to its standard output.
inline std::string Output(const std::string& command) {
  std::string text;
  FILE* pipe = popen(command.c_str(), "r");
  for (int letter; (letter = fgetc(pipe)) != EOF;) text += static_cast<char>(letter);
  pclose(pipe);
  return text;
}

// Packets, as capinfos counts them; -1 when it finds anything wrong with the file.
inline int64_t PacketCount(const std::string& file) {
  const std::string text = Output("capinfos -Tmcr '" + file + "' 2>&1");
  const bool ok = text.starts_with(file + ",") && text.find('\n') + 1 == text.size();
  return ok ? std::stoll(text.substr(file.size() + 1)) : -1;
}
