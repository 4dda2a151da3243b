// A record of what every update gave, one JSON object a line.
#pragma once

#include "host/HostState.h"

#include <cstdio>
#include <memory>
#include <string>

namespace host {

class TouchLog {
  public:
    // Null when the file cannot be written; `problem` then says why.
    static std::unique_ptr<TouchLog> open(const std::string& path, std::string& problem);

    // {"frame":n,"time":s,"result":r,"touches":[{"slot":i,"x":..,"y":..,"z":..}]}
    // `frame` counts the frames received, so a failed update repeats the last number. Positions
    // carry the digits that give back the same float; what is no number is null.
    static std::string line(const HostState& state);

    void write(const HostState& state);

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    explicit TouchLog(std::FILE* file) : file_(file) {}

    std::unique_ptr<std::FILE, Close> file_;
};

} // namespace host
