// Writes log lines to a text file that several processes share.
//
// - Each line, size check and rotation holds the file's `BinaryLock`, which excludes other processes and threads. The
//   members that `writeLog` calls are not thread-safe by themselves.
// - A line is one `write` call, done before `writeLog` returns.
// - A line is lost if the lock cannot be taken within 2 seconds. The next line is preceded by one that says how many
//   lines are missing.
// - A line opens the file or the lock again, at most once a minute, if one of them is missing or if the path leads to
//   another file, which then has another lock.
// - A line is lost if the lock does not exist, or while the disk is full. Nothing reports that.
//
//   03/07/14 16:05:09:123 | [ERROR] | 27403 | QSU | Login | Web | 1001 |  | 4873 | Page load failed
//   time | [level] | session id | domain | sub-domain | component | extra 1 | extra 2 | thread id | message

#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "logging/AppendFile.h"
#include "logging/BinaryLock.h"
#include "logging/LineFormat.h"
#include "logging/LogTargetBase.h"
#include "logging/Segmenting.h"

namespace tarn {

// Returns whether a system of this version has thread ids.
constexpr bool hasThreadIds(int major, int minor) {
  return major >= 11 || minor >= 6;
}

class LogTargetDefault : public LogTargetBase {
 public:
  explicit LogTargetDefault(const char* identifier);
  ~LogTargetDefault() override;

  // Opens the log file for appending. A new file gets mode 0666; an existing file keeps its mode. Returns false for a
  // named pipe. The stream uses a duplicate of the descriptor that the target opens with close-on-exec, so that no
  // program inherits the file, whichever thread starts it.
  bool SetStreamHandle(std::fstream& handle) override;

  // Sets the path to the file of this name in the user's log folder.
  bool SetStreamPath(const char* name);

  // Writes the line and a newline. If the file ends with an unfinished line, of a killed process or a full disk, writes
  // a newline first.
  void WriteStream(const char* line);

  // Opens the file and its lock, and checks the file's size. If the lock cannot be opened, returns true, and the target
  // writes nothing.
  bool onRegisterTarget() override;
  bool onUnregisterTarget() override;

  // Closes the lock for the rest of the process, while threads may be inside `writeLog`: frees nothing. Later lines are
  // dropped.
  void closeForExit();

  // Always returns true. Cuts a formatted message after 4094 characters, but not a message without `arguments`.
  bool writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                const char* component, const char* extra1, const char* extra2, const char* format, va_list* arguments,
                unsigned long long timeMs) override;

  // Counts a line that the caller has lost, unless its level is not written.
  void countMissingLine(Log_Level level);

  // Appends the line to `out`, without a newline. Defined in LineFormat.cpp. A message that contains "eyJ" and, from
  // there on, ".eyJ" may contain an access token: it is replaced, and the level printed is WARN.
  void formatLog(unsigned long long timeMs, Log_Level level, const char* sessionId, const char* domain,
                 const char* subDomain, const char* component, const char* extra1, const char* extra2,
                 const char* message, std::string& out);

  // Formats `timeMs`, or the current time for 0, as local time in the locale's format. `buffer` has 256 bytes.
  //   1234567 => "01/01/70 00:20:34:567" in UTC and the "C" locale
  void getTimeStr(unsigned long long timeMs, char* buffer);

  // Returns "" on a system without thread ids.
  std::string getCurrentThreadID() const;

  // Returns the level's name, "ALL" for a value without a name.
  std::string getLogLevelString(Log_Level level) const;

  // Rotates the log file if its size is 10 MiB or more: copies it to an archive in the same folder and truncates it.
  //
  // - Other processes keep their open file.
  // - If the copy fails, the file is unchanged. A symbolic link is never rotated: the size checked is the link's own.
  // - Does not replace an archive of an earlier rotation: if the name of this second is taken, waits for the next.
  // - Returns true if the file is small enough, or if it is open again. The argument is fixed by the interface and not
  //   used.
  bool SegmentLogFile(bool);

  // Truncates the log file. The stream is closed afterward.
  bool cleanFile();

  // Rotates by renaming the log file. Fails if the new name exists. Does not touch the stream.
  bool renameLogFile();
  const std::string& getRenamedFilePath() const { return renamedFilePath; }

 private:
  class LockGuard;

  // Whether a minute has passed. Returns true to one thread only.
  bool isRepairDue(unsigned long long timeMs);

  // Opens again what is missing or was replaced. `held`: whether this thread holds the lock. Returns whether the lock
  // is another one.
  bool repair(bool held);
  bool replaceLock();
  void checkSizeWhenDue();
  void rotate();
  void beginLine();
  void endLine();
  void closeLock();
  void finalizeLocks();

  // Names fixed by the interface.
  std::unique_ptr<BinaryLock> lock;
  bool threadIdEnabled;
  std::string renamedFilePath;
  std::int64_t segmentCheckTime = 0;
  std::int64_t lastLineTime = 0;

  std::atomic<BinaryLock*> currentLock_{nullptr};         // `lock`, for threads that do not hold it
  std::vector<std::unique_ptr<BinaryLock>> formerLocks_;  // threads may still wait for them
  std::atomic<std::int64_t> repairTime_{0};               // seconds since the epoch
  key_t lockKey_ = -1;
  std::string lockPath_;  // the lock's file, which is not `filePath` after a later `setLogFile`
  AppendFile appendFile_;
  ArchiveNames archiveNames_;
  TimestampCache timestamps_;
  std::atomic<unsigned> missingLines_{0};
  std::string line_;  // a member so that its memory is reused
};

}  // namespace tarn
