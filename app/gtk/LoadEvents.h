// What WebKitGTK says of a web view's loads, as it says it: the raw events that `LoadSignals` delivers and
// `LoadTracker` understands. Plain C++, so that recorded events can be replayed without a window.
//
// Addresses are those that the web view shows while the event is delivered. A resource is known by a number that is
// unique within a run.

#pragma once

#include <string>

struct LoadError {
  // Of the GError; "tls-certificate" for a refused certificate, whose code is its GTlsCertificateFlags.
  std::string domain;
  int code = 0;
};

class LoadEvents {
 public:
  virtual ~LoadEvents() = default;

  // The web view has begun to load; of an address like "javascript:" this is all that is ever heard.
  virtual void loadRequested(const std::string& address) = 0;

  // The four steps of a main-frame load.
  virtual void loadStarted(const std::string& address) = 0;
  virtual void loadRedirected(const std::string& address) = 0;
  virtual void loadCommitted(const std::string& address) = 0;
  virtual void loadFinished(const std::string& address) = 0;

  // A main-frame load has failed; `provisional` when nothing had been committed. The address is that of the failed
  // load.
  virtual void loadFailed(bool provisional, const std::string& address, const LoadError& error) = 0;

  // WebKit asks whether a frame, main or not, may go to the address.
  virtual void navigationAsked(const std::string& address) = 0;

  virtual void resourceStarted(unsigned id, const std::string& address, bool isMain) = 0;
  virtual void resourceRedirected(unsigned id, const std::string& address) = 0;
  virtual void resourceAnswered(unsigned id) = 0;
  virtual void resourceFinished(unsigned id) = 0;
  virtual void resourceFailed(unsigned id, const std::string& address, const LoadError& error) = 0;

  // A navigation that was asked for has become a download, which this program cancels.
  virtual void downloadStarted(const std::string& address) = 0;

  // A dialog waits for a person, not for a server; and has been answered or taken back. Each dialog is told of once.
  virtual void personAsked() = 0;
  virtual void personAnswered() = 0;

  // Some data of a page that is loading has arrived.
  virtual void progressed() = 0;

  // The process that shows the pages, or the one that loads them, is gone.
  virtual void pageProcessEnded() = 0;
};
