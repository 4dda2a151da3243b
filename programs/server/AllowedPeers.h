// Who may connect, by the address that a connection comes from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/network_v6.hpp>

namespace server {

class AllowedPeers {
  public:
    // Nobody.
    AllowedPeers() = default;
    // Programs on this machine that connect to a loopback address.
    static AllowedPeers thisMachine();

    // An address, a network as ADDR/PREFIX, or "any". Nothing changes and the result is false when
    // `text` is none of them.
    bool add(std::string_view text);

    bool admits(const boost::asio::ip::address& peer) const;

    // As added, separated by commas.
    const std::string& text() const { return text_; }
    bool empty() const { return networks_.empty(); }

  private:
    // IPv4 as a socket for both gives it, inside of ::ffff:0:0/96; without zones.
    std::vector<boost::asio::ip::network_v6> networks_;
    std::string text_;
};

} // namespace server
