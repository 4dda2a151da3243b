// Sockets: addresses with their length in front, other numbers for families and options, another
// order in the list of addresses, and no signal from a closed connection once that was asked for.
#include "macos/loader/system/errors.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace loader {

namespace {

constexpr int internet6OnMacos = 30;

int familyHere(int family) {
    return family == internet6OnMacos ? AF_INET6 : family;
}

int familyOfMacos(int family) {
    return family == AF_INET6 ? internet6OnMacos : family;
}

// ---- Addresses: only the first two bytes differ ----

sockaddr_storage addressHere(const void* address, unsigned int size) {
    sockaddr_storage here{};
    std::memcpy(&here, address, std::min<std::size_t>(size, sizeof here));
    const auto family = static_cast<const std::uint8_t*>(address)[1];
    here.ss_family = static_cast<sa_family_t>(familyHere(family));
    return here;
}

std::vector<std::uint8_t> addressOfMacos(const sockaddr* address, socklen_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::memcpy(bytes.data(), address, size);
    bytes.at(0) = static_cast<std::uint8_t>(size);
    bytes.at(1) = static_cast<std::uint8_t>(familyOfMacos(address->sa_family));
    return bytes;
}

int connectSocket(int descriptor, const void* address, unsigned int size) {
    const sockaddr_storage here = addressHere(address, size);
    return withErrno(
        [&] { return connect(descriptor, reinterpret_cast<const sockaddr*>(&here), size); });
}

// ---- Names ----

struct AddressInfoOfMacos {
    int flags;
    int family;
    int type;
    int protocol;
    unsigned int addressSize;
    char* canonicalName;
    void* address;
    AddressInfoOfMacos* next;
};

// A list as the bundle gets it, with what its entries point to.
struct AddressList {
    std::vector<AddressInfoOfMacos> entries;
    std::vector<std::vector<std::uint8_t>> addresses;
};

std::mutex listsMutex;
std::map<const AddressInfoOfMacos*, AddressList> lists; // by their first entry

int lookupErrorOfMacos(int error) {
    switch (error) {
    case EAI_AGAIN:
        return 2;
    case EAI_BADFLAGS:
        return 3;
    case EAI_FAIL:
        return 4;
    case EAI_FAMILY:
        return 5;
    case EAI_MEMORY:
        return 6;
    case EAI_SERVICE:
        return 9;
    case EAI_SOCKTYPE:
        return 10;
    case EAI_SYSTEM:
        return 11;
    default:
        return 8; // the name is not known
    }
}

AddressList listOfMacos(const addrinfo* here) {
    AddressList list;
    for (; here != nullptr; here = here->ai_next) {
        list.addresses.push_back(addressOfMacos(here->ai_addr, here->ai_addrlen));
        list.entries.push_back({0, familyOfMacos(here->ai_family), here->ai_socktype,
                                here->ai_protocol, here->ai_addrlen, nullptr,
                                list.addresses.back().data(), nullptr});
    }
    for (std::size_t number = 1; number < list.entries.size(); ++number) {
        list.entries[number - 1].next = &list.entries[number];
    }
    return list;
}

// Flags are not translated, as none are given.
int lookUp(const char* host, const char* service, const AddressInfoOfMacos* asked,
           AddressInfoOfMacos** result) {
    addrinfo hints{};
    if (asked != nullptr) {
        hints.ai_family = familyHere(asked->family);
        hints.ai_socktype = asked->type;
        hints.ai_protocol = asked->protocol;
    }
    addrinfo* found = nullptr;
    const int error = getaddrinfo(host, service, &hints, &found);
    if (error != 0) {
        return lookupErrorOfMacos(error);
    }
    AddressList list = listOfMacos(found);
    freeaddrinfo(found);
    const std::scoped_lock lock(listsMutex);
    *result = list.entries.data();
    lists.emplace(*result, std::move(list));
    return 0;
}

void forgetList(AddressInfoOfMacos* list) {
    const std::scoped_lock lock(listsMutex);
    lists.erase(list);
}

// ---- Options and sending ----

std::mutex quietMutex;
std::set<int> quietSockets; // those that raise no signal when their peer has closed

constexpr int socketLevelOnMacos = 0xFFFF;
constexpr int errorOptionOnMacos = 0x1007;
constexpr int noSignalOptionOnMacos = 0x1022;

int makeSocket(int family, int type, int protocol) {
    const int descriptor = withErrno([&] { return socket(familyHere(family), type, protocol); });
    const std::scoped_lock lock(quietMutex);
    quietSockets.erase(descriptor);
    return descriptor;
}

// Only the options that are used are known.
int setOption(int descriptor, int level, int option, const void* value, unsigned int size) {
    int isSet = 0;
    if (level != socketLevelOnMacos || option != noSignalOptionOnMacos || size != sizeof isSet) {
        bundleErrno() = errorOfMacos(ENOPROTOOPT);
        return -1;
    }
    // A descriptor that is none fails as it would there.
    int type = 0;
    socklen_t typeSize = sizeof type;
    if (withErrno([&] { return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &typeSize); }) !=
        0) {
        return -1;
    }
    std::memcpy(&isSet, value, sizeof isSet);
    const std::scoped_lock lock(quietMutex);
    if (isSet != 0) {
        quietSockets.insert(descriptor);
    } else {
        quietSockets.erase(descriptor);
    }
    return 0;
}

int getOption(int descriptor, int level, int option, void* value, unsigned int* size) {
    if (level != socketLevelOnMacos || option != errorOptionOnMacos) {
        bundleErrno() = errorOfMacos(ENOPROTOOPT);
        return -1;
    }
    const int result =
        withErrno([&] { return getsockopt(descriptor, SOL_SOCKET, SO_ERROR, value, size); });
    int* error = static_cast<int*>(value);
    *error = errorOfMacos(*error);
    return result;
}

// No flags are given: on macOS the option takes the place of the only one.
ssize_t sendBytes(int descriptor, const void* bytes, std::size_t size, int) {
    const bool quiet = [&] {
        const std::scoped_lock lock(quietMutex);
        return quietSockets.count(descriptor) != 0;
    }();
    return withErrno([&] { return send(descriptor, bytes, size, quiet ? MSG_NOSIGNAL : 0); });
}

// The number is narrower there; what lies above it in the register is anything.
int pollDescriptors(pollfd* descriptors, unsigned int count, int milliseconds) {
    return withErrno([&] { return poll(descriptors, count, milliseconds); });
}

} // namespace

Symbols socketSymbols() {
    return {
        {"_connect", addressOf(connectSocket)}, {"_freeaddrinfo", addressOf(forgetList)},
        {"_getaddrinfo", addressOf(lookUp)},    {"_getsockopt", addressOf(getOption)},
        {"_poll", addressOf(pollDescriptors)},  {"_recv", translated<recv>()},
        {"_send", addressOf(sendBytes)},        {"_setsockopt", addressOf(setOption)},
        {"_shutdown", translated<shutdown>()},  {"_socket", addressOf(makeSocket)},
    };
}

} // namespace loader
