// Writes log lines into a text file that several processes share.
//
// Each line, size check and cut is done while the file's `BinaryLock` is held, which orders processes and threads
// alike; the members below that `writeLog` calls are not thread-safe by themselves. A line is one write and is on its
// way to the file when `writeLog` returns. A target that has no lock, or cannot take it, drops the line without a word;
// so does a full disk, for as long as it is full.
//
//   03/07/14 16:05:09:123 | [ERROR] | 27403 | QSU | Login | Web | 1001 |  | 4873 | Page load failed
//   time | [level] | session id | domain | sub-domain | component | extra 1 | extra 2 | thread id | message

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "logging/BinaryLock.h"
#include "logging/FileEnd.h"
#include "logging/LogTargetBase.h"
#include "logging/SecondText.h"

namespace tarn {

// Whether a system of this version numbers its threads.
constexpr bool numbersThreads(int major, int minor) {
  return major >= 11 || minor >= 6;
}

class LogTargetDefault : public LogTargetBase {
 public:
  explicit LogTargetDefault(const char* identifier);
  ~LogTargetDefault() override;

  // Opens for appending. A file that is created here may be read and written by everybody; one that exists keeps its
  // mode. A pipe is refused: opening one waits for its reader.
  bool SetStreamHandle(std::fstream& handle) override;

  // Puts the log file into the user's log folder, under this name.
  bool SetStreamPath(const char* name);

  // Writes the line and a newline. A line that a killed writer or a full disk has left unfinished is ended first.
  void WriteStream(const char* line);

  // Makes the file, its lock and an immediate size check. A lock that cannot be made is no failure: the target then
  // writes nothing.
  bool onRegisterTarget() override;
  bool onUnregisterTarget() override;

  // Always true. A formatted message keeps its first 4094 characters; a finished one is written whole.
  bool writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                const char* component, const char* extra1, const char* extra2, const char* format, va_list* arguments,
                unsigned long long timeMs) override;

  // Appends the line to `out`, without a newline. A message that holds "eyJ" and, from there on, ".eyJ" may carry an
  // access token: the line says so instead, at level WARN.
  void formatLog(unsigned long long timeMs, Log_Level level, const char* sessionId, const char* domain,
                 const char* subDomain, const char* component, const char* extra1, const char* extra2,
                 const char* message, std::string& out);

  // The local time of `timeMs`, 0 for now, in the locale's form; `buffer` takes 256 bytes.  1234567 => "…:34:567"
  void getTimeStr(unsigned long long timeMs, char* buffer);

  // "" on a system that does not number its threads.
  std::string getCurrentThreadID() const;

  // The level's name; "ALL" for any value that has none.
  std::string getLogLevelString(Log_Level level) const;

  // Looks at the size of the log file, and cuts it when it has reached 10 MiB: its contents move to an archive beside
  // it and the file starts anew, still the same file to everybody who has it open. A cut whose copy fails leaves the
  // file as it is, and so does a log that is a symbolic link. True when there was nothing to do or the file is open
  // again; the argument, fixed by the interface, is ignored.
  bool SegmentLogFile(bool);

  // Empties the log file and leaves the stream closed.
  bool cleanFile();

  // The other way of cutting: renames the log file, unless the new name is taken; the stream stays where it is.
  bool renameLogFile();
  const std::string& getRenamedFilePath() const { return renamedFilePath; }

 private:
  void checkSizeWhenDue();
  void beginLine();
  void endLine();
  void dropLock();

  std::unique_ptr<BinaryLock> lock;
  bool threadIdEnabled;
  std::string renamedFilePath;
  std::int64_t segmentCheckTime = 0;
  std::int64_t lastLineTime = 0;

  std::string lockPath;  // the file that the lock is made from; a target that moves on keeps its lock
  FileEnd fileEnd;
  SecondText secondText;
  std::string line;  // being written; kept for its memory
};

}  // namespace tarn
