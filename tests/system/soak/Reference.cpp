#include "system/soak/Reference.h"

#include "CameraSession.h"
#include "CameraSource.h"
#include "FrameLayout.h"
#include "camera/cameraManager.h"

#include <chrono>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <json11.hpp>

namespace soak {

namespace {

TouchRecords recordsOf(const std::string& line) {
    std::string error = "noError";
    const json11::Json json = json11::Json::parse(line, error);
    if (error != "noError")
        throw std::runtime_error("the touch log is broken: " + error);
    TouchRecords records;
    for (const json11::Json& touch : json["touches"].array_items())
        records.at(static_cast<std::size_t>(touch["slot"].int_value())) = {
            1, touch["x"].number_value(), touch["y"].number_value(), touch["z"].number_value()};
    return records;
}

} // namespace

Reference::Reference(const server::Options& options, const std::string& touchLog)
    : options_(options), touchLog_(touchLog), thread_([this] {
          try {
              run();
          } catch (...) {
              failure_ = std::current_exception();
          }
      }) {}

Reference::~Reference() {
    serverEnded_ = true;
    if (thread_.joinable())
        thread_.join();
}

void Reference::finish() {
    serverEnded_ = true;
    thread_.join();
    if (failure_)
        std::rethrow_exception(failure_);
}

void Reference::run() {
    server::selectCameraSource(options_);
    const server::CameraSession session(options_);
    header_ = session.header();
    const server::FrameLayout layout(header_);
    frame_.resize(layout.frameBytes());
    layout.compose({}, {}, frame_);
    blank_ = markOf(frame_);

    std::ifstream log(touchLog_);
    std::string line;
    while (true) {
        const bool ended = serverEnded_;
        std::string piece;
        std::getline(log, piece);
        line += piece;
        if (!log.eof()) {
            follow(line);
            line.clear();
        } else if (ended) {
            return;
        } else {
            log.clear();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
}

void Reference::follow(const std::string& line) {
    QVR::networkFrameData parts;
    if (QVR::cameraManager::update(parts) != 0)
        throw std::runtime_error("the reference camera failed");
    server::FrameLayout(header_).compose(parts, {}, frame_);
    frames_.push_back(markOf(frame_));
    if (hashOf(recordsOf(line)) != frames_.back().touches)
        ++differences_;
    for (std::size_t slot = 0; slot < touchSlots; ++slot)
        touches_ += parts.touches[slot].active == 1 ? 1U : 0U;
}

} // namespace soak
