// A host reduced to its socket: connects on 127.0.0.1 and reads what comes, in bounded time.
#pragma once

#include "serverClient/frameProtocol.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace support {

using Bytes = std::vector<std::byte>;

class RawClient {
  public:
    // Throws when nobody listens there. `receiveBuffer`: bytes that the system may hold unread;
    // 0 leaves it to the system.
    explicit RawClient(std::uint16_t port, int receiveBuffer = 0);
    // One that connects from another address of this machine, such as 127.0.0.2. Throws as well
    // when this machine does not have the address.
    static RawClient from(const std::string& address, std::uint16_t port);
    ~RawClient();
    RawClient(RawClient&& other) noexcept;
    RawClient& operator=(RawClient&&) = delete;

    // Exactly `size` bytes; throws when the connection ends or a minute passes before.
    Bytes read(std::size_t size);
    // The header, and the bytes of one frame as the header announces them.
    QVR::ProtocolHeader readHeader();
    Bytes readFrame();
    // The same into a buffer that is used again and again.
    void readFrame(Bytes& frame);
    std::size_t frameBytes() const { return frameBytes_; }

    // True when the connection ends within a minute; what comes before is thrown away.
    bool waitUntilClosed();
    // How many bytes come before the connection ends; throws when a minute passes without any.
    std::size_t bytesUntilClosed();
    // Whether something is there to read, or the end, within `milliseconds`.
    bool readable(int milliseconds);

    // True when all was taken.
    bool send(const Bytes& bytes);
    void close();
    // Closes so that the server sees an error instead of an end.
    void reset();

  private:
    RawClient();
    void connect(std::uint16_t port);
    // Fills `bytes`.
    void readInto(Bytes& bytes);
    // Bytes read, 0 at the end or after an error; nothing after a minute.
    std::optional<std::size_t> readSome(std::byte* into, std::size_t size);

    int descriptor_ = -1;
    std::size_t frameBytes_ = 0;
};

// A frame of the header below that shows where it begins, which one it is, and any shift: word i
// holds number * 2^32 + i.
QVR::ProtocolHeader wordsHeader(std::uint32_t words);
void fillWords(std::byte* frame, std::size_t size, std::uint32_t number);
// The number of an unbroken frame; throws for any other bytes.
std::uint32_t numberOf(const Bytes& frame);

} // namespace support
