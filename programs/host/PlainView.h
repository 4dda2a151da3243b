// One line for every change, for logs and pipes.
#pragma once

#include "host/HostView.h"

#include <cstdio>
#include <string>

namespace host {

class PlainView : public HostView {
  public:
    // Writes to `output`, which must outlive the view; every line is flushed.
    explicit PlainView(std::FILE* output) : output_(output) {}

    void show(const HostState& state) override;
    bool tick() override { return true; }

  private:
    void line(double now, const std::string& text);

    std::FILE* output_;
    bool started_ = false;
    Connection connection_ = Connection::waiting;
    std::string message_;
};

} // namespace host
