#include "exposure.h"

#include <cstddef>
#include <sstream>
#include <string_view>
#include <vector>

namespace server {

namespace {

std::string streams(const QVR::ProtocolHeader& header) {
    std::vector<std::string_view> sent;
    if (header.touchCount != 0)
        sent.push_back("touches");
    if (header.colorChannels != 0)
        sent.push_back("colour images");
    if (header.depthChannels != 0)
        sent.push_back("depth images");
    if (header.processedChannels != 0)
        sent.push_back("the detection's mask");
    if (sent.empty())
        return "nothing but the sizes of its images";
    std::string text(sent[0]);
    for (std::size_t i = 1; i < sent.size(); ++i)
        text.append(i + 1 == sent.size() ? " and " : ", ").append(sent[i]);
    return text;
}

} // namespace

std::string exposureWarning(const boost::asio::ip::tcp::endpoint& endpoint,
                            const QVR::ProtocolHeader& header, const AllowedPeers& allowed) {
    std::ostringstream text;
    text << "WARNING: whoever reaches " << endpoint << " from an allowed address ("
         << allowed.text() << ") gets " << streams(header)
         << ", without a password and unencrypted";
    return text.str();
}

} // namespace server
