#include "app/gtk/Strip.h"

#include <string>

#include "app/gtk/Language.h"
#include "app/gtk/Style.h"

namespace {

constexpr int kStripHeight = 20;
constexpr guint kPulseMilliseconds = 60;
constexpr double kFirstData = 0.1;  // WebKit reports this fraction before any data has arrived
constexpr char kPadlockIcon[] = "channel-secure-symbolic";
constexpr char kWarningIcon[] = "dialog-warning-symbolic";
constexpr char kWarningClass[] = "warning";

constexpr char kStyle[] = R"(
.site { font-size: smaller; padding: 0 6px; color: @theme_fg_color; background-color: @theme_bg_color; }
.site.warning { color: @theme_bg_color; background-color: @theme_fg_color; }
.site .host { font-weight: bold; }
progressbar.load { opacity: 1; }
progressbar.load trough, progressbar.load progress {
  min-height: 2px; border: none; border-radius: 0; margin: 0; padding: 0; box-shadow: none; }
progressbar.load trough { background: none; }
progressbar.load progress { background: @theme_selected_bg_color; }
)";

void setText(GtkWidget* label, const std::string& text) {
  gtk_label_set_text(GTK_LABEL(label), text.c_str());
  gtk_widget_set_visible(label, !text.empty());
}

GtkWidget* newText(PangoEllipsizeMode ellipsis) {
  GtkWidget* const text = gtk_label_new(nullptr);
  gtk_label_set_ellipsize(GTK_LABEL(text), ellipsis);
  gtk_label_set_single_line_mode(GTK_LABEL(text), TRUE);
  return text;
}

GtkWidget* newLine() {
  GtkWidget* const line = gtk_progress_bar_new();
  gtk_widget_set_valign(line, GTK_ALIGN_END);
  gtk_widget_set_no_show_all(line, TRUE);
  setStyleClass(line, "load");
  return line;
}

bool animationsEnabled() {
  gboolean wanted = TRUE;
  g_object_get(gtk_settings_get_default(), "gtk-enable-animations", &wanted, nullptr);
  return wanted == TRUE;
}

}  // namespace

StripText stripText(const Site& site) {
  switch (site.kind) {
    case Site::Kind::kNone:
      return {nullptr, "", "", _("No site yet")};
    case Site::Kind::kEncrypted:
      return {kPadlockIcon, site.host, "", filled(_("Site: %1, over an encrypted connection"), {site.host})};
    case Site::Kind::kLoopback:
      return {nullptr, site.host, "", filled(_("Site: %1, this computer"), {site.host})};
    case Site::Kind::kPlain:
      return {kWarningIcon, site.host, _("Not encrypted: others can read what you type"),
              filled(_("Warning: the connection to %1 is not encrypted: others can read what you type"), {site.host})};
    case Site::Kind::kFile:
      return {nullptr, _("A page on this computer"), "", _("A page on this computer")};
    case Site::Kind::kNowhere:
      break;
  }
  return {kWarningIcon, "", _("This page does not say whose it is"), _("Warning: this page does not say whose it is")};
}

Strip::Strip()
    : overlay_(gtk_overlay_new()),
      background_(newText(PANGO_ELLIPSIZE_NONE)),
      row_(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6)),
      icon_(gtk_image_new()),
      host_(newText(PANGO_ELLIPSIZE_START)),
      warning_(newText(PANGO_ELLIPSIZE_END)),
      partHidden_(newText(PANGO_ELLIPSIZE_END)),
      line_(newLine()) {
  addStyle(kStyle);
  setStyleClass(background_, "site");
  setStyleClass(row_, "site");
  setStyleClass(host_, "host");
  for (GtkWidget* const part : {icon_, host_, warning_, partHidden_}) {
    gtk_widget_set_no_show_all(part, TRUE);
    gtk_box_pack_start(GTK_BOX(row_), part, FALSE, FALSE, 0);
  }
  gtk_widget_set_size_request(overlay_, -1, kStripHeight);

  // An overlay child does not widen the window, which would otherwise grow to the length of the host.
  gtk_container_add(GTK_CONTAINER(overlay_), background_);
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), row_);
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay_), line_);
  atk_object_set_role(gtk_widget_get_accessible(overlay_), ATK_ROLE_STATUSBAR);
  show({});
}

Strip::~Strip() {
  stopPulse();
}

void Strip::show(const Site& site) {
  const StripText text = stripText(site);
  if (text.icon != nullptr) gtk_image_set_from_icon_name(GTK_IMAGE(icon_), text.icon, GTK_ICON_SIZE_MENU);
  gtk_widget_set_visible(icon_, text.icon != nullptr);
  setText(host_, text.host.empty() ? "" : leftToRight(text.host));
  setText(warning_, text.warning);
  setStyleClass(background_, kWarningClass, !text.warning.empty());
  setStyleClass(row_, kWarningClass, !text.warning.empty());
  siteText_ = text.accessibleText;
  updateAccessibleText();
}

void Strip::showPartHidden(bool hidden) {
  setText(partHidden_, hidden ? _("Part of the page is hidden: zoom with Ctrl and +, then scroll") : "");
  updateAccessibleText();
}

void Strip::updateAccessibleText() {
  const std::string hint = gtk_label_get_text(GTK_LABEL(partHidden_));
  const std::string text = hint.empty() ? siteText_ : siteText_ + ". " + hint;
  atk_object_set_name(gtk_widget_get_accessible(overlay_), text.c_str());
}

void Strip::showProgress(double fraction) {
  gtk_widget_show(line_);
  if (fraction <= kFirstData && animationsEnabled()) {
    if (pulse_ == 0) pulse_ = g_timeout_add(kPulseMilliseconds, onPulse, this);
    return;
  }
  stopPulse();
  gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(line_), fraction);
}

void Strip::hideProgress() {
  stopPulse();
  gtk_widget_hide(line_);
}

gboolean Strip::onPulse(gpointer self) {
  gtk_progress_bar_pulse(GTK_PROGRESS_BAR(static_cast<Strip*>(self)->line_));
  return G_SOURCE_CONTINUE;
}

void Strip::stopPulse() {
  if (pulse_ != 0) g_source_remove(pulse_);
  pulse_ = 0;
}
