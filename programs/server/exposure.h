// What a server that others can reach shows to them, in words.
#pragma once

#include "AllowedPeers.h"
#include "serverClient/frameProtocol.h"

#include <string>

#include <boost/asio/ip/tcp.hpp>

namespace server {

// For the person who started it: where it listens, what is sent as `header` has it, and to whom.
std::string exposureWarning(const boost::asio::ip::tcp::endpoint& endpoint,
                            const QVR::ProtocolHeader& header, const AllowedPeers& allowed);

} // namespace server
