#include "platform/gtk/web/FileDrop.h"

#include "platform/gtk/glib/Signals.h"

namespace quillmere::platform::gtk {

namespace {

using Client = std::weak_ptr<WebViewClient>;

bool isForeign(GdkDrop* drop) {
    return gdk_drop_get_drag(drop) == nullptr;
}

bool carriesFiles(GdkDrop* drop) {
    GdkContentFormats* formats = gdk_content_formats_ref(gdk_drop_get_formats(drop));
    formats = gdk_content_formats_union_deserialize_gtypes(formats);
    const bool carries = gdk_content_formats_contain_gtype(formats, GDK_TYPE_FILE_LIST);
    gdk_content_formats_unref(formats);
    return carries;
}

/// The web view would take what we refuse, and tell the other program that it was moved away.
void letPageTake(GtkWidget* webView, bool allowed) {
    const auto controllers = GObjectRef<GListModel>::adopt(gtk_widget_observe_controllers(webView));
    for (guint index = 0; index < g_list_model_get_n_items(controllers.get()); ++index) {
        const auto item =
            GObjectRef<GObject>::adopt(static_cast<GObject*>(g_list_model_get_item(controllers.get(), index)));
        if (GTK_IS_DROP_TARGET_ASYNC(item.get()))
            gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(item.get()),
                                                       allowed ? GTK_PHASE_BUBBLE : GTK_PHASE_NONE);
    }
}

/// Links come as "files" too; only those with a path are.
std::vector<FileUrl> localFiles(const GValue* value) {
    std::vector<FileUrl> files;
    if (!value || !G_VALUE_HOLDS(value, GDK_TYPE_FILE_LIST))
        return files;
    auto* list = static_cast<GdkFileList*>(g_value_get_boxed(value));
    GSList* const first = list ? gdk_file_list_get_files(list) : nullptr;
    for (GSList* item = first; item; item = item->next)
        if (const char* path = g_file_peek_path(static_cast<GFile*>(item->data)))
            files.emplace_back(path);
    g_slist_free(first);
    return files;
}

GdkDragAction operationFor(const Client& weak, GtkDropTarget* target) {
    const auto client = weak.lock();
    const auto files = localFiles(gtk_drop_target_get_value(target)); // empty until they have come over
    const bool takes = client && !files.empty() && client->draggingEntered(files) == DragOperation::copy;
    return takes ? GDK_ACTION_COPY : GdkDragAction{};
}

} // namespace

void acceptFileDrops(GtkWidget* webView, const std::weak_ptr<WebViewClient>& client) {
    GtkDropTarget* target = gtk_drop_target_new(GDK_TYPE_FILE_LIST, GDK_ACTION_COPY);
    gtk_drop_target_set_preload(target, TRUE);
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(target), GTK_PHASE_CAPTURE);
    connectForLife(target, "accept", [webView](GtkDropTarget*, GdkDrop* drop) -> gboolean {
        const bool foreign = isForeign(drop);
        letPageTake(webView, !foreign);
        return foreign && carriesFiles(drop);
    });
    const auto answer = [client](GtkDropTarget* entered, double, double) { return operationFor(client, entered); };
    connectForLife(target, "enter", answer);
    connectForLife(target, "motion", answer);
    connectForLife(target, "drop", [client](GtkDropTarget*, const GValue* value, double, double) -> gboolean {
        const auto files = localFiles(value);
        const auto taker = client.lock();
        return taker && !files.empty() && taker->performDragOperation(files);
    });
    gtk_widget_add_controller(webView, GTK_EVENT_CONTROLLER(target));
}

} // namespace quillmere::platform::gtk
