// A bare GTK 4 window around a WebKitGTK view: `bare_window ADDRESS [FOLDER]`. Window, view, present, load, in the
// plain order. With a folder it serves the private scheme from it the simplest way. The page's titles go to standard
// output.

#include <cstdio>
#include <string>
#include <webkit/webkit.h>

namespace {

std::string address;
std::string folder;

void serve(WebKitURISchemeRequest* request, gpointer) {
    const std::string path = folder + webkit_uri_scheme_request_get_path(request);
    GFile* file = g_file_new_for_path(path.c_str());
    GError* error = nullptr;
    GFileInputStream* stream = g_file_read(file, nullptr, &error);
    if (stream) {
        char* type = g_content_type_guess(path.c_str(), nullptr, 0, nullptr);
        char* mime = g_content_type_get_mime_type(type);
        webkit_uri_scheme_request_finish(request, G_INPUT_STREAM(stream), -1, mime);
        g_free(mime);
        g_free(type);
        g_object_unref(stream);
    } else {
        webkit_uri_scheme_request_finish_error(request, error);
        g_error_free(error);
    }
    g_object_unref(file);
}

void titleChanged(GObject* view, GParamSpec*, gpointer) {
    if (const char* title = webkit_web_view_get_title(WEBKIT_WEB_VIEW(view))) {
        std::puts(title);
        std::fflush(stdout);
    }
}

void activate(GtkApplication* application, gpointer) {
    GtkWidget* window = gtk_application_window_new(application);
    gtk_window_set_default_size(GTK_WINDOW(window), 1240, 800);
    auto* session = webkit_network_session_new_ephemeral();
    auto* view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, nullptr));
    webkit_web_context_register_uri_scheme(webkit_web_view_get_context(view), "quillmere", serve, nullptr, nullptr);
    g_signal_connect(view, "notify::title", G_CALLBACK(titleChanged), nullptr);
    gtk_window_set_child(GTK_WINDOW(window), GTK_WIDGET(view));
    gtk_window_present(GTK_WINDOW(window));
    webkit_web_view_load_uri(view, address.c_str());
    g_object_unref(session);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    address = argv[1];
    folder = argc > 2 ? argv[2] : ".";
    GtkApplication* application = gtk_application_new(nullptr, G_APPLICATION_NON_UNIQUE);
    g_signal_connect(application, "activate", G_CALLBACK(activate), nullptr);
    const int status = g_application_run(G_APPLICATION(application), 0, nullptr);
    g_object_unref(application);
    return status;
}
