// Shows prompts to the user, one at a time, below the strip.
//
// - A prompt overlaps the strip, where no page can draw, and is part of the window: nothing can hide it, and the window
//   can be closed while it is shown.
// - The page gets no input while a prompt is shown.
// - A prompt takes input only after it has been shown for 700 ms without a key press or click. Earlier ones are
//   dropped: they were meant for the page, which decides when a prompt appears.
// - A prompt with a field that ends without the user's reply drops keys and clicks until 700 ms have passed without a
//   key press: the keys were meant for the prompt, and may be the rest of a password.
// - A prompt that can only be declined takes Escape and clicks on Cancel at once.
// - Return accepts, or takes the choice that has the focus. Escape declines.
// - Further prompts wait in a queue.
// Main thread.

#pragma once

#include <gtk/gtk.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "app/gtk/Glib.h"

struct Prompt {
  struct Field {
    std::string label;  // empty: the message is the label
    std::string value;
    bool secret = false;
  };

  std::string heading;  // names the sender
  std::string message;  // the sender's text; shortened to fit into the window
  std::string warning;
  std::vector<Field> fields;
  std::vector<std::string> choices;  // one button each, instead of OK
  bool canBeAccepted = true;
  bool canBeDeclined = true;
};

struct PromptReply {
  bool accepted = false;
  std::vector<std::string> values;  // of the fields; empty if declined
  std::size_t choice = 0;           // the index of the chosen one
};

class Prompts {
 public:
  using Id = unsigned;

  // Shows prompts in `overlay`, at the upper edge of `page`. Both must outlive this object.
  Prompts(GtkOverlay* overlay, GtkWidget* page);
  ~Prompts();

  Prompts(const Prompts&) = delete;
  Prompts& operator=(const Prompts&) = delete;

  // Removes every prompt without a reply. Call before the widgets are destroyed.
  void close();

  // Shows a prompt or queues it. Calls `onReply` once, unless the prompt is cancelled first.
  Id show(Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // As `show`, but before those that wait, and in the place of the one that is shown, which then waits.
  Id showFirst(Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // Shows another prompt in the place of `id`, also in the queue. Returns false if that one already has a reply.
  bool replace(Id id, Prompt prompt, std::function<void(const PromptReply&)> onReply);

  // Whether a prompt is shown.
  bool isShown() const { return !queue_.empty(); }

  // Removes a prompt without a reply. Returns false if it already has one.
  bool cancel(Id id);

  // Replies to every prompt as if the user had declined it.
  void declineAll();

 private:
  struct Entry {
    Id id;
    Prompt prompt;
    std::function<void(const PromptReply&)> onReply;
  };

  std::deque<Entry>::iterator find(Id id);
  void build(const Prompt& prompt);
  void add(GtkWidget* part);
  GtkWidget* addText(const std::string& text, const char* styleClass);
  GtkWidget* addMessage(const std::string& message);
  void addField(const Prompt::Field& field, GtkWidget* label);
  void addChoices(const std::vector<std::string>& choices);
  void addButtons(const Prompt& prompt);
  void addButton(const char* label, bool accepts);
  GtkWidget* newButton(bool accepts, std::size_t choice);
  bool canOnlyBeDeclined() const;
  void delayInput();
  void cancelDelay();
  void takeInput();
  std::deque<Entry> clear();
  void showNextOrEnablePage();
  void withdraw();
  void removeFrame();
  void enablePage();
  void reply(bool accepted, std::size_t choice);

  static gboolean onPosition(GtkOverlay* overlay, GtkWidget* child, GdkRectangle* position, Prompts* self);
  static gboolean onDraw(GtkWidget* frame, cairo_t*, Prompts* self);
  static void onAccept(GtkWidget* button, Prompts* self);
  static void onDecline(GtkWidget* button, Prompts* self);
  static gboolean onKeyPress(GtkWidget*, GdkEventKey* event, Prompts* self);
  static void onClick(GtkGestureMultiPress*, int presses, double x, double y, Prompts* self);
  static gboolean onDelayOver(gpointer self);

  GtkOverlay* overlay_;
  GtkWidget* page_;
  Owned<GtkGesture, g_object_unref> clicks_;
  GtkWidget* frame_ = nullptr;      // of the prompt that is shown, or that was withdrawn less than the delay ago
  std::vector<GtkEntry*> entries_;  // of the prompt that is shown
  GtkWidget* choices_ = nullptr;    // of the prompt that is shown; nullptr: it has none
  GtkWidget* buttons_ = nullptr;    // of the prompt that is shown
  GtkWidget* accept_ = nullptr;     // the button that has the focus first
  bool takesInput_ = false;         // the prompt that is shown
  guint delay_ = 0;
  std::deque<Entry> queue_;  // the first one is shown
  Id lastId_ = 0;
};
