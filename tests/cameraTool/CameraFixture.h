// A scripted camera that the program opens.
#pragma once

#include "realsense/support/ScriptedSource.h"
#include "realsense/support/calls.h"
#include "server/ServerError.h"
#include "support/ScopedEnvironment.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace camera_tool_test {

// Like the script's, and fails where the test says.
class FailingSource final : public camera_test::ScriptedSource {
  public:
    FailingSource(std::shared_ptr<camera_test::Script> script, std::string startProblem)
        : ScriptedSource(std::move(script)), startProblem_(std::move(startProblem)) {}

    std::unique_ptr<camera::FrameArrivals> start(camera::EnabledStreams enabled, int framerate,
                                                 camera::Clock& clock) override {
        if (!startProblem_.empty()) {
            throw std::runtime_error(startProblem_);
        }
        return ScriptedSource::start(enabled, framerate, clock);
    }

  private:
    std::string startProblem_;
};

class CameraFixture : public testing::Test {
  protected:
    CameraFixture() {
        script->paced = false;
        camera_test::selectSource(
            [this] { return std::make_unique<FailingSource>(script, startProblem); });
    }
    ~CameraFixture() override { camera::setEnumeration(nullptr); }

    // What the action throws: exit code and message; {0, ""} when it does not.
    static std::pair<int, std::string> failure(const std::function<void()>& action) {
        try {
            action();
        } catch (const server::ServerError& error) {
            return {error.code(), error.what()};
        }
        return {0, ""};
    }

    support::ScopedEnvironment environment{"QVR_CAMERA", nullptr};
    std::shared_ptr<camera_test::Script> script = std::make_shared<camera_test::Script>();
    std::string startProblem;
};

} // namespace camera_tool_test
