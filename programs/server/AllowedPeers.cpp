#include "AllowedPeers.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include <boost/asio/ip/network_v4.hpp>

namespace server {

namespace ip = boost::asio::ip;

namespace {

constexpr unsigned short bitsBeforeIPv4 = 96;
constexpr std::size_t longestPrefixText = 4; // "/128"

// The zone of a link-local address says where a packet came in, not who sent it.
ip::address_v6 asIPv6(const ip::address& address) {
    if (address.is_v4())
        return ip::make_address_v6(ip::v4_mapped, address.to_v4());
    return ip::address_v6(address.to_v6().to_bytes());
}

std::optional<ip::network_v6> network(const std::string& text) {
    boost::system::error_code error;
    if (text == "any")
        return ip::network_v6();
    const ip::address address = ip::make_address(text, error);
    if (!error)
        return ip::network_v6(asIPv6(address), 128);
    // A longer number would be read modulo some power of two.
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos || text.size() - slash > longestPrefixText)
        return std::nullopt;
    const ip::network_v4 four = ip::make_network_v4(text, error);
    if (!error)
        return ip::network_v6(asIPv6(four.address()),
                              static_cast<unsigned short>(bitsBeforeIPv4 + four.prefix_length()))
            .canonical();
    const ip::network_v6 six = ip::make_network_v6(text, error);
    if (!error)
        return ip::network_v6(asIPv6(six.address()), six.prefix_length()).canonical();
    return std::nullopt;
}

} // namespace

AllowedPeers AllowedPeers::thisMachine() {
    AllowedPeers peers;
    peers.add("127.0.0.0/8");
    peers.add("::1");
    return peers;
}

bool AllowedPeers::add(std::string_view text) {
    const std::optional<ip::network_v6> added = network(std::string(text));
    if (!added)
        return false;
    networks_.push_back(*added);
    text_ += (text_.empty() ? "" : ", ") + std::string(text);
    return true;
}

bool AllowedPeers::admits(const ip::address& peer) const {
    const ip::address_v6 address = asIPv6(peer);
    return std::any_of(networks_.begin(), networks_.end(), [&](const ip::network_v6& network) {
        return ip::network_v6(address, network.prefix_length()).canonical() == network;
    });
}

} // namespace server
