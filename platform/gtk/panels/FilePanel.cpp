#include "platform/gtk/panels/FilePanel.h"

namespace quillmere::platform::gtk {

namespace {

constexpr int panelWidth = 820, panelHeight = 540, messageMargin = 10;

void closeOnEscape(GtkWidget* window) {
    GtkEventController* shortcuts = gtk_shortcut_controller_new();
    // After the chooser, which uses the key for its path field.
    gtk_event_controller_set_propagation_phase(shortcuts, GTK_PHASE_BUBBLE);
    gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(shortcuts),
                                         gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_Escape, GdkModifierType{}),
                                                          gtk_named_action_new("window.close")));
    gtk_widget_add_controller(window, shortcuts);
}

GtkFileFilter* imageFilter() {
    GtkFileFilter* filter = gtk_file_filter_new();
    gtk_file_filter_set_name(filter, "Images");
    gtk_file_filter_add_mime_type(filter, "image/*");
    return filter;
}

/// The chooser below a text that says what is to be chosen.
GtkWidget* explained(GtkWidget* chooser, const std::string& message) {
    GtkWidget* label = gtk_label_new(message.c_str());
    gtk_widget_add_css_class(label, "dim-label");
    gtk_label_set_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
    for (const auto set : {gtk_widget_set_margin_top, gtk_widget_set_margin_bottom, gtk_widget_set_margin_start,
                           gtk_widget_set_margin_end})
        set(label, messageMargin);
    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(column), label);
    gtk_widget_set_vexpand(chooser, TRUE);
    gtk_box_append(GTK_BOX(column), chooser);
    return column;
}

} // namespace

FilePanel::FilePanel(GtkWindow* parent, const OpenPanelSpec& spec, const FileUrl& folder, Completion completion)
    : completion_(std::move(completion)), takesFolders_(spec.folders) {
    if ((spec.files && spec.folders) || !spec.message.empty())
        buildOwn(parent, spec);
    else
        buildNative(parent, spec);
    const auto start = GObjectRef<GFile>::adopt(g_file_new_for_path(folder.path().c_str()));
    gtk_file_chooser_set_current_folder(chooser_, start.get(), nullptr);
    present();
}

FilePanel::~FilePanel() {
    connections_.clear();
    if (native_)
        gtk_native_dialog_destroy(GTK_NATIVE_DIALOG(native_.get()));
    if (window_)
        gtk_window_destroy(window_.get());
}

void FilePanel::present() {
    if (native_)
        gtk_native_dialog_show(GTK_NATIVE_DIALOG(native_.get()));
    else
        gtk_window_present(window_.get());
}

void FilePanel::buildOwn(GtkWindow* parent, const OpenPanelSpec& spec) {
    GtkWidget* window = gtk_window_new();
    window_ = GObjectRef<GtkWindow>::share(GTK_WINDOW(window));
    gtk_window_set_title(window_.get(), spec.title.c_str());
    gtk_window_set_transient_for(window_.get(), parent);
    gtk_window_set_modal(window_.get(), TRUE);
    gtk_window_set_default_size(window_.get(), panelWidth, panelHeight);

    GtkWidget* header = gtk_header_bar_new();
    gtk_header_bar_set_show_title_buttons(GTK_HEADER_BAR(header), FALSE);
    GtkWidget* cancel = gtk_button_new_with_mnemonic("_Cancel");
    GtkWidget* open = gtk_button_new_with_mnemonic("_Open");
    gtk_widget_add_css_class(open, "suggested-action");
    gtk_header_bar_pack_start(GTK_HEADER_BAR(header), cancel);
    gtk_header_bar_pack_end(GTK_HEADER_BAR(header), open);
    gtk_window_set_titlebar(window_.get(), header);

    GtkWidget* chooser = gtk_file_chooser_widget_new(GTK_FILE_CHOOSER_ACTION_OPEN);
    chooser_ = GTK_FILE_CHOOSER(chooser);
    gtk_window_set_child(window_.get(), spec.message.empty() ? chooser : explained(chooser, spec.message));
    gtk_window_set_default_widget(window_.get(), open); // what a double click on a file activates
    closeOnEscape(window);

    connections_.push_back(connect(open, "clicked", [this](GtkButton*) { accept(); }));
    connections_.push_back(connect(cancel, "clicked", [this](GtkButton*) { finish(nullptr); }));
    connections_.push_back(connect(window, "close-request", [this](GtkWindow*) -> gboolean {
        finish(nullptr);
        return TRUE;
    }));
}

void FilePanel::buildNative(GtkWindow* parent, const OpenPanelSpec& spec) {
    const auto action = spec.folders ? GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER : GTK_FILE_CHOOSER_ACTION_OPEN;
    native_ = GObjectRef<GtkFileChooserNative>::adopt(
        gtk_file_chooser_native_new(spec.title.c_str(), parent, action, "_Open", "_Cancel"));
    gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(native_.get()), TRUE);
    chooser_ = GTK_FILE_CHOOSER(native_.get());
    if (spec.types == AllowedTypes::images) {
        const auto filter = GObjectRef<GtkFileFilter>::share(imageFilter());
        gtk_file_chooser_add_filter(chooser_, filter.get());
        gtk_file_chooser_set_filter(chooser_, filter.get());
    }
    connections_.push_back(connect(native_.get(), "response", [this](GtkNativeDialog*, int response) {
        response == GTK_RESPONSE_ACCEPT ? accept() : finish(nullptr);
    }));
}

void FilePanel::accept() {
    auto file = GObjectRef<GFile>::adopt(gtk_file_chooser_get_file(chooser_));
    if (file && !takesFolders_ &&
        g_file_query_file_type(file.get(), G_FILE_QUERY_INFO_NONE, nullptr) == G_FILE_TYPE_DIRECTORY) {
        gtk_file_chooser_set_current_folder(chooser_, file.get(), nullptr);
        return;
    }
    if (!file && !takesFolders_)
        return; // nothing is selected yet
    if (!file)
        file = GObjectRef<GFile>::adopt(gtk_file_chooser_get_current_folder(chooser_));
    finish(file.get());
}

void FilePanel::finish(GFile* file) {
    if (!completion_)
        return;
    if (window_)
        gtk_widget_set_visible(GTK_WIDGET(window_.get()), FALSE);
    // Only what has a path in the file system can be opened.
    const char* path = file ? g_file_peek_path(file) : nullptr;
    auto answer = path ? std::optional(FileUrl(path)) : std::nullopt;
    // Not inside the panel's own signal: the completion destroys the panel.
    answering_.after(std::chrono::milliseconds{0}, [completion = std::exchange(completion_, nullptr),
                                                    answer = std::move(answer)] { completion(answer); });
}

} // namespace quillmere::platform::gtk
