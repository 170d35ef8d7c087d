#pragma once

#include "base/Clock.h"
#include "platform/MediaExporter.h"
#include "tests/platform/common/WholeFiles.h"

#include <atomic>
#include <fstream>
#include <optional>

namespace quillmere::tests {

/// An exporter whose sessions end as they are told to.
class DrivenExporter final : public platform::MediaExporter {
public:
    enum class End { none, completes, fails, hangs };
    End end = End::none;
    std::optional<platform::ExportPreset> preset;
    std::optional<platform::ExportRequest> request;
    bool isCancelled = false;

    std::unique_ptr<platform::MediaExportSession> makeSession(const FileUrl&, platform::ExportPreset asked) override {
        preset = asked;
        return end == End::none ? nullptr : std::make_unique<Session>(*this);
    }

private:
    class Session final : public platform::MediaExportSession {
    public:
        explicit Session(DrivenExporter& owner) : owner_(owner) {}
        void exportAsynchronously(const platform::ExportRequest& request, std::function<void()> completion) override {
            owner_.request = request;
            std::ofstream(request.output.filesystemPath())
                << (owner_.end == End::completes ? mediaAround("exported\n") : "partial");
            if (owner_.end != End::hangs)
                completion();
        }
        void cancelExport() override { owner_.isCancelled = true; }
        platform::ExportStatus status() const override {
            if (owner_.isCancelled)
                return platform::ExportStatus::cancelled;
            return owner_.end == End::completes ? platform::ExportStatus::completed : platform::ExportStatus::failed;
        }

    private:
        DrivenExporter& owner_;
    };
};

/// Stands still until it is told to be past every limit; then each look is three minutes later than the one before.
class DrivenClock {
public:
    std::atomic<bool> isPast = false;
    SteadyTime operator()() const {
        if (isPast)
            ++jumps_;
        return start_ + jumps_.load() * std::chrono::seconds(180);
    }

private:
    const SteadyTime start_ = steadyNow();
    mutable std::atomic<int> jumps_ = 0;
};

} // namespace quillmere::tests
