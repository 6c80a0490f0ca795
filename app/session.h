#pragma once

// Session: one run of q7z over one input: the host, the document, the job with its progress bar, and the report that becomes of it.

#include <string>

#include "app/arguments.h"
#include "app/report.h"
#include "app/signals.h"
#include "app/stdincopy.h"
#include "host/headlesshost.h"

namespace q7z::app
{

/// The folder part of a path; empty for a bare name.
std::string GetFolder(const std::string& path);

class Session
{
public:
  explicit Session(const Arguments& arguments);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  /// The document stays: the process ends behind its session, which gives all memory back at once.
  ~Session();

  /// Starts the plug-in alone. @return the exit code so far; what failed has been said on stderr.
  int StartHost();
  /// Starts the plug-in and loads the input. @return the exit code so far; what failed has been said on stderr.
  int LoadInput();
  /// The same for an input that is a scene document.
  int ReadScene();
  /// Saves the document as a glTF file where the output is wanted. @return the exit code so far.
  int SaveOutput();

  /// Says that images which the file held itself go with the run, where a document was written that names them.
  void WarnOfLostImages();

  /// Where images that the file held itself are, when nobody named a folder for them; empty for nowhere.
  std::string GetImageFolder() const;
  HeadlessHost& GetHost() { return *_host; }
  HeadlessDocument& GetDocument() { return *_document; }
  HeadlessJob& GetJob() { return _job; }
  RunReport& GetReport() { return _report; }

  /// The exit code of an interrupted run.
  static int GetInterruptCode();

  /// Says what failed, on stderr and in the report. @return code.
  int Fail(int code, const std::string& message);

  /// Ends the run: writes the report where it is wanted. @return the exit code, after what --strict and signals make of it.
  int Finish(int code);

private:
  std::string ChooseImageFolder() const;
  int CheckInput(const std::string& stdinName);
  int MakeDocument();
  int JudgeLoad(const LoadReport& loaded);
  int FailInterrupted();
  int SaveInto(const std::string& path);
  int SaveThrough(std::FILE* stream);
  void TakeWarnings(const SaveReport& saved);
  int JudgeSave(const SaveReport& saved);
  int JudgeSize(const std::string& path);
  std::string NameOutput() const;
  void TakeMessages();
  void CountObjects();
  void Say(const char* kind, const char* color, const std::string& message);
  void SayWarning(const std::string& message);
  void StartTimer();
  void StopTimer(const std::string& name);

  const Arguments& _arguments;
  bool _color;
  std::string _path;
  RunReport _report;
  ProgressBar _bar;
  HeadlessJob _job;
  InterruptGuard _interrupts;
  std::unique_ptr<HeadlessHost> _host;
  HeadlessOwner<HeadlessDocument> _document;  // goes before the host
  std::chrono::steady_clock::time_point _timer;

  StdinCopy _stdinCopy;
};

}  // namespace q7z::app
