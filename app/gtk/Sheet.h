// A question to the person, on a sheet that hangs down from the strip.
//
// It reaches from the strip into the page's area, which no page can draw, and it is part of the one window: nothing can
// hide it, and the window can be closed while it hangs. The page takes no keys and no clicks meanwhile. Return accepts,
// Escape does not. Questions that come while one hangs wait for their turn. Main thread.

#pragma once

#include <gtk/gtk.h>

#include <deque>
#include <functional>
#include <string>
#include <vector>

struct Question {
  struct Field {
    std::string label;  // none: the question's words say what it is for
    std::string value;
    bool secret = false;
  };

  std::string heading;  // who asks
  std::string words;    // what they say; shortened where it would fill the window
  std::string warning;
  std::vector<Field> fields;
  bool canBeDeclined = true;
};

struct Reply {
  bool accepted = false;
  std::vector<std::string> values;  // of the fields, when accepted
};

class Sheet {
 public:
  using Number = unsigned;

  // Hangs in `over` from the upper edge of `page`, which it stands in front of. Both outlive the sheet.
  Sheet(GtkOverlay* over, GtkWidget* page);

  Sheet(const Sheet&) = delete;
  Sheet& operator=(const Sheet&) = delete;

  // Takes down and drops every question, unanswered; call it while the widgets still live. Whoever waits for an answer
  // may take its question back meanwhile.
  void close();

  // Asks; `onReply` is called once, unless the question is withdrawn first.
  Number ask(Question question, std::function<void(const Reply&)> onReply);

  // Takes a question back that nobody needs an answer to any more; false when it has been answered before.
  bool withdraw(Number number);

  // Answers every question as though the person had declined.
  void declineAll();

 private:
  struct Waiting {
    Number number;
    Question question;
    std::function<void(const Reply&)> onReply;
  };

  void hang(const Question& question);
  void add(GtkWidget* part);
  GtkWidget* addText(const std::string& text, const char* styleClass);
  GtkWidget* addWords(const std::string& words);
  void addField(const Question::Field& field, GtkWidget* label);
  GtkWidget* addButtons(bool canBeDeclined);  // the one that accepts
  std::deque<Waiting> clear();
  void takeDown();
  void givePageBack();
  void answer(bool accepted);

  static gboolean onPlace(GtkOverlay* over, GtkWidget* child, GdkRectangle* place, Sheet* self);
  static gboolean onKeyPress(GtkWidget*, GdkEventKey* event, Sheet* self);

  GtkOverlay* over_;
  GtkWidget* page_;
  GtkWidget* frame_ = nullptr;      // while a question hangs
  std::vector<GtkEntry*> entries_;  // of the question that hangs
  std::deque<Waiting> questions_;   // the first one hangs
  Number last_ = 0;
};
