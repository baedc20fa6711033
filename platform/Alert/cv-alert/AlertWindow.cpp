#include "platform/Alert/cv-alert/AlertWindow.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "platform/Alert/AlertMessage.h"

namespace cv {

namespace {

constexpr int MARGIN = 18;
constexpr int ICON_GAP = 14;
constexpr int LINE_CHARACTERS = 60;
constexpr int LEAST_CHARACTERS = 24;
constexpr int BUTTON_CHARACTERS = 40;

struct FreeGlib {
    void operator()(void* memory) const { g_free(memory); }
};

/// `text` as UTF-8, whatever it is; faults and zeros in it become U+FFFD.
std::unique_ptr<char, FreeGlib> validText(const std::string& text) {
    return std::unique_ptr<char, FreeGlib>(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

struct StyleLook {
    const char* title;
    const char* icon;
};

StyleLook lookOf(AlertStyle style) {
    switch (style) {
        case AlertStyle::Informational:
            return {"Information", "dialog-information"};
        case AlertStyle::Critical:
            return {"Critical", "dialog-error"};
        case AlertStyle::Warning:
            break;
    }
    return {"Alert", "dialog-warning"};
}

struct Room {
    int width;
    int height;
};

/// What the smallest monitor has room for: the window may come up on any.
Room screenRoom() {
    GdkDisplay* const display = gdk_display_get_default();
    Room room{G_MAXINT, G_MAXINT};
    for (int i = 0; i < gdk_display_get_n_monitors(display); ++i) {
        GdkRectangle area{};
        gdk_monitor_get_workarea(gdk_display_get_monitor(display, i), &area);
        room = {std::min(room.width, area.width - 2 * MARGIN), std::min(room.height, area.height)};
    }
    return room;
}

GtkWidget* makeLabel(const std::string& message) {
    GtkWidget* const widget = gtk_label_new(validText(message).get());
    GtkLabel* const label = GTK_LABEL(widget);
    PangoAttrList* const attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
    gtk_label_set_attributes(label, attributes);
    pango_attr_list_unref(attributes);
    gtk_label_set_line_wrap(label, TRUE);
    gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
    gtk_label_set_width_chars(label, LEAST_CHARACTERS);
    gtk_label_set_max_width_chars(label, LINE_CHARACTERS);
    gtk_label_set_selectable(label, TRUE);  // to be copied
    gtk_label_set_xalign(label, 0);
    gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
    gtk_widget_set_can_focus(widget, FALSE);
    return widget;
}

/// The keys that scroll, since the buttons have the focus. TRUE when the key was one of them.
gboolean scrollByKey(GtkWidget*, GdkEventKey* event, gpointer scrolled) {
    static constexpr struct {
        guint key;
        GtkScrollType scroll;
    } KEYS[] = {{GDK_KEY_Up, GTK_SCROLL_STEP_UP},      {GDK_KEY_Down, GTK_SCROLL_STEP_DOWN},
                {GDK_KEY_Page_Up, GTK_SCROLL_PAGE_UP}, {GDK_KEY_Page_Down, GTK_SCROLL_PAGE_DOWN},
                {GDK_KEY_Home, GTK_SCROLL_START},      {GDK_KEY_End, GTK_SCROLL_END}};
    for (const auto& [key, scroll] : KEYS) {
        if (event->keyval == key) {
            gboolean done = FALSE;
            g_signal_emit_by_name(scrolled, "scroll-child", scroll, FALSE, &done);
            return TRUE;
        }
    }
    return FALSE;
}

/// A view on the label that is `height` high and scrolls.
GtkWidget* makeScrolled(GtkWidget* window, GtkWidget* label, int height) {
    GtkWidget* const widget = gtk_scrolled_window_new(nullptr, nullptr);
    GtkScrolledWindow* const scrolled = GTK_SCROLLED_WINDOW(widget);
    gtk_scrolled_window_set_policy(scrolled, GTK_POLICY_NEVER, GTK_POLICY_ALWAYS);
    gtk_scrolled_window_set_overlay_scrolling(scrolled, FALSE);
    gtk_scrolled_window_set_propagate_natural_width(scrolled, TRUE);
    gtk_scrolled_window_set_min_content_height(scrolled, height);
    gtk_widget_set_valign(label, GTK_ALIGN_START);
    gtk_container_add(GTK_CONTAINER(scrolled), label);
    g_signal_connect(window, "key-press-event", G_CALLBACK(scrollByKey), scrolled);
    return widget;
}

/// The label itself, or a view on it when it is higher than half the screen.
GtkWidget* makeTextArea(GtkWidget* window, const std::string& message) {
    GtkWidget* const label = makeLabel(message);
    gtk_widget_show(label);
    int width = 0;
    int height = 0;
    gtk_widget_get_preferred_width(label, nullptr, &width);
    gtk_widget_get_preferred_height_for_width(label, width, nullptr, &height);
    const int greatestHeight = screenRoom().height / 2;
    return height <= greatestHeight ? label : makeScrolled(window, label, greatestHeight);
}

GtkWidget* makeIcon(const StyleLook& look) {
    GtkWidget* const icon = gtk_image_new_from_icon_name(look.icon, GTK_ICON_SIZE_DIALOG);
    gtk_widget_set_valign(icon, GTK_ALIGN_START);
    atk_object_set_name(gtk_widget_get_accessible(icon), look.title);
    return icon;
}

void addContent(GtkWidget* window, const Alert& alert) {
    GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, ICON_GAP);
    gtk_container_set_border_width(GTK_CONTAINER(row), MARGIN);
    gtk_box_pack_start(GTK_BOX(row), makeIcon(lookOf(alert.style)), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(row), makeTextArea(window, alert.message), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(gtk_dialog_get_content_area(GTK_DIALOG(window))), row, TRUE, TRUE, 0);
}

GtkWidget* addButton(GtkWidget* window, const std::string& title, int response) {
    GtkWidget* const button = gtk_dialog_add_button(GTK_DIALOG(window), "-", response);
    gtk_button_set_use_underline(GTK_BUTTON(button), FALSE);
    GtkLabel* const label = GTK_LABEL(gtk_bin_get_child(GTK_BIN(button)));
    const auto text = validText(title);
    gtk_label_set_text(label, text.get());
    if (g_utf8_strlen(text.get(), -1) > BUTTON_CHARACTERS) {
        gtk_label_set_ellipsize(label, PANGO_ELLIPSIZE_END);
        gtk_label_set_width_chars(label, BUTTON_CHARACTERS);
    }
    return button;
}

/// Gives the row of buttons the window's margins, and makes a column of it when it is too wide for the screen.
void layOutButtons(GtkWidget* row) {
    gtk_widget_set_margin_start(row, MARGIN);
    gtk_widget_set_margin_end(row, MARGIN);
    gtk_widget_set_margin_bottom(row, MARGIN);
    gtk_widget_show_all(row);
    int width = 0;
    gtk_widget_get_preferred_width(row, nullptr, &width);
    if (width > screenRoom().width) {
        gtk_orientable_set_orientation(GTK_ORIENTABLE(row), GTK_ORIENTATION_VERTICAL);
    }
}

/// The buttons as they were added, from left to right. The first one has the focus and Return.
void addButtons(GtkWidget* window, const Alert& alert) {
    GtkWidget* const first = addButton(window, alert.buttons.front(), 0);
    for (std::size_t i = 1; i < alert.buttons.size(); ++i) {
        addButton(window, alert.buttons[i], static_cast<int>(i));
    }
    gtk_style_context_add_class(gtk_widget_get_style_context(first), GTK_STYLE_CLASS_SUGGESTED_ACTION);
    gtk_widget_grab_default(first);
    gtk_widget_grab_focus(first);
    layOutButtons(gtk_widget_get_parent(first));
}

/// Window managers give a new window the focus by rules of their own, and where there is none, nobody does.
gboolean takeFocus(GtkWidget* window, GdkEvent*, gpointer) {
    gdk_window_focus(gtk_widget_get_window(window), GDK_CURRENT_TIME);
    return FALSE;
}

GtkWidget* makeWindow(const Alert& alert) {
    const StyleLook look = lookOf(alert.style);
    GtkWidget* const window = gtk_dialog_new();
    atk_object_set_role(gtk_widget_get_accessible(window), ATK_ROLE_ALERT);
    const char* const title = std::getenv("CV_ALERT_TITLE");
    gtk_window_set_title(GTK_WINDOW(window), title == nullptr ? look.title : validText(title).get());
    gtk_window_set_icon_name(GTK_WINDOW(window), look.icon);
    gtk_window_set_position(GTK_WINDOW(window), GTK_WIN_POS_CENTER);
    gtk_window_set_resizable(GTK_WINDOW(window), FALSE);
    gtk_window_set_deletable(GTK_WINDOW(window), closingButton(alert) ? TRUE : FALSE);
    addContent(window, alert);
    addButtons(window, alert);
    g_signal_connect(window, "map-event", G_CALLBACK(takeFocus), nullptr);
    gtk_widget_show_all(window);
    return window;
}

}  // namespace

std::size_t askInWindow(const Alert& alert) {
    const std::optional<std::size_t> closing = closingButton(alert);
    GtkWidget* const window = makeWindow(alert);
    int response = GTK_RESPONSE_NONE;
    while (response < 0) {
        response = gtk_dialog_run(GTK_DIALOG(window));
        if (response == GTK_RESPONSE_DELETE_EVENT && closing) {
            response = static_cast<int>(*closing);
        }
    }
    gtk_widget_destroy(window);
    gdk_display_flush(gdk_display_get_default());
    return static_cast<std::size_t>(response);
}

}  // namespace cv
