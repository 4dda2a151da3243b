// A record of every camera frame's touches beside where the fingers truly were, for measuring
// how well touches are found.
#pragma once

#include "CameraSource.h"
#include "serverClient/frameProtocol.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace QVR {
class touchManager;
}

namespace server {

// One JSON object a line:
//   {"frame":0,"time":0.016,"touches":[{"slot":0,"x":..,"y":..,"z":..,"pixel":[column,row],
//    "depth":..}],"truth":[{"id":0,"touching":true,"pixel":[..],"depth":..,"display":[x,y,z]}]}
// x, y, z are as sent; pixel and depth are the tracked position behind them. "truth" is there
// only when the camera source knows its scene. What is no finite number is written as null.
class TouchLog {
  public:
    // Replaces the file. Throws ServerError (exitBadOption) when it cannot be written.
    explicit TouchLog(const std::string& path);

    // `records`: the ten records of `touches`. A disk that fills up is
    // reported once.
    void write(std::uint64_t frame, double seconds, const QVR::NetworkTouch* records,
               const QVR::touchManager& touches, const std::optional<SceneTruth>& truth);

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string path_;
    std::unique_ptr<std::FILE, Close> file_;
    bool failed_ = false;
};

} // namespace server
