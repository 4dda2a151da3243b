#include "system/soak/Vitals.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace soak {

Vitals vitalsOf(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    long total = 0;
    long resident = 0;
    if (!(std::ifstream(folder + "/statm") >> total >> resident))
        throw std::runtime_error("process " + std::to_string(process) + " is gone");
    const std::filesystem::directory_iterator descriptors(folder + "/fd");
    return {static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) /
                1048576.0,
            static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)))};
}

} // namespace soak
