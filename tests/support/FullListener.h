// A port of 127.0.0.1 whose queue of connections is full: a further attempt gets no answer.
#pragma once

#include <vector>

namespace support {

class FullListener {
  public:
    FullListener();
    ~FullListener();
    FullListener(const FullListener&) = delete;
    FullListener& operator=(const FullListener&) = delete;

    unsigned int port() const { return port_; }

  private:
    std::vector<int> descriptors_; // the listener, then those that fill its queue
    unsigned int port_ = 0;
};

} // namespace support
