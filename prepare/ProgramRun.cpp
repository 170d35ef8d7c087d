#include "prepare/ProgramRun.h"

#include "base/Errors.h"
#include "platform/common/ProcessRegistry.h"

#include <utility>

namespace quillmere {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(50);
/// Between the request to end and the end by force.
constexpr auto grace = std::chrono::seconds(2);

} // namespace

void runProgram(const platform::ProcessSpec& program, std::chrono::seconds limit, const SteadyClock& clock,
                std::shared_ptr<const platform::TemporaryFolder> work) {
    platform::ChildProcess child(program);
    const SteadyTime deadline = clock() + limit;
    while (!child.waitUntil(steadyNow() + pollInterval)) {
        if (clock() < deadline)
            continue;
        platform::ProcessRegistry::endSoon(std::move(child), grace, [work = std::move(work)] {});
        throw FileFailure("File conversion timed out.");
    }
    if (!child.wait().isSuccess())
        throw FileFailure(converterFailure);
}

} // namespace quillmere
