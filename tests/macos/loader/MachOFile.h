// A Mach-O file as it lies on the disk, with the words of its format left behind. Addresses are
// those that the linker gave, from 0 on.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace loader {

struct Segment {
    std::string name;
    std::uint64_t address = 0;
    std::uint64_t size = 0;   // in memory; zeros follow the content
    std::string_view content; // valid as long as the file
    int protection = 0;       // as mmap takes it
};

enum class SectionKind { Other, Initialisers, ThreadLocalVariables, ThreadLocalData };

struct Section {
    std::string name;
    SectionKind kind = SectionKind::Other;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

// A pointer that is to hold the address of a symbol.
struct Binding {
    std::uint64_t place = 0;
    std::string symbol;
    std::int64_t addend = 0;
    bool weak = false; // only if another image defines the symbol as well
};

class MachOFile {
  public:
    // Throws std::runtime_error when it is no bundle for 64-bit x86 that the loader understands.
    explicit MachOFile(const std::string& path);
    ~MachOFile();
    MachOFile(const MachOFile&) = delete;
    MachOFile& operator=(const MachOFile&) = delete;

    const std::vector<Segment>& segments() const { return segments_; }
    std::vector<Section> sections(SectionKind kind) const;
    // Null when there is none.
    const Section* section(const std::string& name) const;

    const std::vector<std::uint64_t>& pointersToMove() const { return pointersToMove_; }
    const std::vector<Binding>& bindings() const { return bindings_; }
    const std::map<std::string, std::uint64_t>& exports() const { return exports_; }

  private:
    struct Reader;

    std::unique_ptr<Reader> reader_;
    std::vector<Segment> segments_;
    std::vector<Section> sections_;
    std::vector<std::uint64_t> pointersToMove_;
    std::vector<Binding> bindings_;
    std::map<std::string, std::uint64_t> exports_;
};

} // namespace loader
