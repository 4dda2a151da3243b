#include "macos/loader/system/errors.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include <time.h>

namespace loader {

namespace {

// From 35 on the systems went separate ways; the numbers below are the same but for EAGAIN.
const std::map<int, int>& numbers() {
    static const std::map<int, int> table = {
        {EAGAIN, 35},          {EINPROGRESS, 36},  {EALREADY, 37},     {ENOTSOCK, 38},
        {EDESTADDRREQ, 39},    {EMSGSIZE, 40},     {EPROTOTYPE, 41},   {ENOPROTOOPT, 42},
        {EPROTONOSUPPORT, 43}, {ENOTSUP, 45},      {EAFNOSUPPORT, 47}, {EADDRINUSE, 48},
        {EADDRNOTAVAIL, 49},   {ENETDOWN, 50},     {ENETUNREACH, 51},  {ENETRESET, 52},
        {ECONNABORTED, 53},    {ECONNRESET, 54},   {ENOBUFS, 55},      {EISCONN, 56},
        {ENOTCONN, 57},        {ESHUTDOWN, 58},    {ETIMEDOUT, 60},    {ECONNREFUSED, 61},
        {ELOOP, 62},           {ENAMETOOLONG, 63}, {EHOSTDOWN, 64},    {EHOSTUNREACH, 65},
        {ENOTEMPTY, 66},       {EDQUOT, 69},       {ESTALE, 70},       {ENOLCK, 77},
        {ENOSYS, 78},          {EOVERFLOW, 84},    {ECANCELED, 89},    {EILSEQ, 92},
        {EDEADLK, 11},
    };
    return table;
}

constexpr int ioError = 5; // the same in both

int errorOfLinux(int macosError) {
    for (const auto& [ours, theirs] : numbers()) {
        if (theirs == macosError) {
            return ours;
        }
    }
    return macosError;
}

int* errnoOfBundle() {
    return &bundleErrno();
}

int describeError(int error, char* text, std::size_t size) {
    // What glibc calls by this name has another result, and may leave the buffer alone.
    std::array<char, 256> buffer{};
    std::snprintf(text, size, "%s", strerror_r(errorOfLinux(error), buffer.data(), buffer.size()));
    return 0;
}

} // namespace

int errorOfMacos(int linuxError) {
    const auto place = numbers().find(linuxError);
    if (place != numbers().end()) {
        return place->second;
    }
    return linuxError < EDEADLK ? linuxError : ioError;
}

int& bundleErrno() {
    thread_local int number = 0;
    return number;
}

Symbols errorSymbols() {
    return {
        {"___error", addressOf(errnoOfBundle)},
        {"_strerror_r", addressOf(describeError)},
        {"_nanosleep", translated<nanosleep>()},
        {"_strtod", translated<static_cast<double (*)(const char*, char**)>(std::strtod)>()},
        {"_strtoll", translated<std::strtoll>()},
        {"_strtoull", translated<std::strtoull>()},
    };
}

} // namespace loader
