// One event that WebKitGTK reports about the loads of a web view, not yet interpreted.
//
// Plain C++: recorded events can be replayed without a window.

#pragma once

#include <string>

struct LoadError {
  std::string domain;  // of the GError; "tls-certificate" for a refused certificate
  int code = 0;        // of the GError; the GTlsCertificateFlags of a refused certificate
};

struct LoadEvent {
  enum class Kind {
    kRequested,  // the web view has begun to load; the only event of addresses like "javascript:"

    // The main frame's load.
    kStarted,
    kRedirected,
    kCommitted,
    kFinished,
    kProvisionalFailed,  // before the commit
    kFailed,             // after the commit

    kNavigation,  // WebKit asks for permission to load the address into a frame, main or not

    // The load of one resource. A main resource is the main frame's document.
    kMainResourceStarted,
    kResourceStarted,
    kResourceRedirected,
    kResourceResponse,
    kResourceFinished,
    kResourceFailed,

    kDownloadStarted,  // a navigation has become a download, which this program cancels
    kPromptShown,      // the load waits for the user
    kPromptClosed,     // once for each kPromptShown
    kProgress,         // data of a page has arrived
    kProcessEnded,     // the web process or the network process has ended
  };

  Kind kind = Kind::kProgress;
  std::string address;    // of the failed load or the resource; else the web view's current address
  unsigned resource = 0;  // identifies a resource, unique within a run; 0 if the event has none
  LoadError error;        // of the events that report a failure
};
