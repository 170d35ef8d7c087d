#include "platform/gtk/web/NetworkFilter.h"

#include "base/Json.h"
#include "platform/gtk/glib/Signals.h"

#include <filesystem>
#include <utility>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* filterName = "network";

json::object rule(const std::string& addresses, const char* action) {
    return {{"trigger", {{"url-filter", addresses}}}, {"action", {{"type", action}}}};
}

} // namespace

// Outlives its owner until the compiler has answered.
class NetworkFilter::Compilation : public std::enable_shared_from_this<Compilation> {
public:
    explicit Compilation(WebKitUserContentManager* manager)
        : manager_(GObjectRef<WebKitUserContentManager>::share(manager)) {}

    ~Compilation() { removeFolder(); }

    State state() const noexcept { return state_; }

    void start(std::string rules, std::vector<std::string> folders) {
        rules_ = std::move(rules);
        folders_ = std::move(folders);
        tryNextFolder();
    }

    const std::vector<std::string>& refused() const noexcept { return refused_; }

private:
    void tryNextFolder() {
        while (next_ < folders_.size()) {
            const std::string parent = folders_[next_++];
            const GlibText name(g_build_filename(parent.c_str(), "quillmere-XXXXXX", nullptr));
            constexpr int ownerOnly = 0700;
            g_mkdir_with_parents(parent.c_str(), ownerOnly);
            if (!g_mkdtemp(name.get())) {
                refused_.push_back(parent);
                continue;
            }
            folder_.reset(g_strdup(name.get()));
            return save();
        }
        state_ = State::failed;
    }

    void save() {
        store_ = GObjectRef<WebKitUserContentFilterStore>::adopt(webkit_user_content_filter_store_new(folder_.get()));
        const GlibBytes source(g_bytes_new(rules_.data(), rules_.size()));
        const auto finished = +[](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Compilation>> self(static_cast<std::shared_ptr<Compilation>*>(data));
            guarded([&] { (*self)->install(result); });
        };
        webkit_user_content_filter_store_save(store_.get(), filterName, source.get(), nullptr, finished,
                                              new std::shared_ptr<Compilation>(shared_from_this()));
    }

    void removeFolder() noexcept {
        std::error_code ignored;
        if (const GlibText folder = std::exchange(folder_, {}))
            std::filesystem::remove_all(folder.get(), ignored);
    }

    void install(GAsyncResult* result) {
        auto* filter = webkit_user_content_filter_store_save_finish(store_.get(), result, nullptr);
        // The engine has the rules mapped. Later is too late: the program may end without destroying anything.
        removeFolder();
        if (!filter) {
            refused_.push_back(folders_[next_ - 1]);
            return tryNextFolder();
        }
        webkit_user_content_manager_add_filter(manager_.get(), filter);
        webkit_user_content_filter_unref(filter);
        state_ = State::installed;
    }

    GObjectRef<WebKitUserContentManager> manager_;
    GObjectRef<WebKitUserContentFilterStore> store_;
    GlibText folder_;
    std::string rules_;
    std::vector<std::string> folders_; // tried in this order
    size_t next_ = 0;
    std::vector<std::string> refused_;
    State state_ = State::compiling;
};

NetworkFilter::NetworkFilter(WebKitUserContentManager* manager, const std::string& scheme, const std::string& host,
                             std::vector<std::string> folders)
    : compilation_(std::make_shared<Compilation>(manager)) {
    compilation_->start(rules(scheme, host), std::move(folders));
}

std::vector<std::string> NetworkFilter::standardFolders() {
    return {g_get_tmp_dir(), g_get_user_runtime_dir(), g_get_user_cache_dir()};
}

std::string NetworkFilter::failure() const {
    std::string sentence = "The viewer could not be closed off from the network.";
    const auto& refused = compilation_->refused();
    for (size_t i = 0; i < refused.size(); ++i)
        sentence.append(i == 0 ? " These folders cannot be written to: " : ", ").append(refused[i]);
    return refused.empty() ? sentence : sentence + ".";
}

NetworkFilter::State NetworkFilter::state() const noexcept {
    return compilation_->state();
}

NetworkFilter::State NetworkFilter::wait(std::chrono::milliseconds limit) {
    const auto compilation = compilation_;
    bool late = false;
    LoopTimer deadline;
    if (compilation->state() == State::compiling)
        deadline.after(limit, [&late] { late = true; });
    while (compilation->state() == State::compiling && !late)
        g_main_context_iteration(nullptr, TRUE);
    return compilation->state();
}

std::string NetworkFilter::rules(const std::string& scheme, const std::string& host) {
    json::array list{rule(".*", "block")};
    for (const std::string& allowed : {std::string("^").append(scheme).append("://").append(host).append("/"),
                                       std::string("^blob:"), std::string("^data:"), std::string("^about:")})
        list.push_back(rule(allowed, "ignore-previous-rules"));
    return json::serialize(list);
}

} // namespace quillmere::platform::gtk
