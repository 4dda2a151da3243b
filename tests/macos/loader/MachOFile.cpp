#include "macos/loader/MachOFile.h"

#include <stdexcept>

#include <llvm/BinaryFormat/Magic.h>
#include <llvm/Object/MachO.h>
#include <llvm/Object/MachOUniversal.h>
#include <llvm/Support/MemoryBuffer.h>
#include <sys/mman.h>

namespace loader {

namespace {

namespace MachO = llvm::MachO;
using llvm::object::MachOObjectFile;

std::unique_ptr<llvm::MemoryBuffer> contentOf(const std::string& path) {
    auto content = llvm::MemoryBuffer::getFile(path);
    if (!content) {
        throw std::runtime_error(path + ": " + content.getError().message());
    }
    return std::move(*content);
}

// The part for 64-bit x86 of a file for several kinds of processors.
llvm::Expected<std::unique_ptr<MachOObjectFile>> partOf(llvm::MemoryBufferRef content) {
    auto parts = llvm::object::MachOUniversalBinary::create(content);
    if (!parts) {
        return parts.takeError();
    }
    return (*parts)->getMachOObjectForArch("x86_64");
}

std::unique_ptr<MachOObjectFile> objectIn(const std::string& path,
                                          const llvm::MemoryBuffer& content) {
    const llvm::MemoryBufferRef reference = content.getMemBufferRef();
    const bool hasParts =
        llvm::identify_magic(content.getBuffer()) == llvm::file_magic::macho_universal_binary;
    auto object =
        hasParts ? partOf(reference) : llvm::object::ObjectFile::createMachOObjectFile(reference);
    if (!object) {
        throw std::runtime_error(path + ": " + llvm::toString(object.takeError()));
    }
    const MachO::mach_header_64& header = (*object)->getHeader64();
    if (header.cputype != MachO::CPU_TYPE_X86_64 || header.filetype != MachO::MH_BUNDLE) {
        throw std::runtime_error(path + " is no bundle for 64-bit x86");
    }
    return std::move(*object);
}

// The tables are walked with an error at hand, which has to be looked at afterwards.
template <typename Walk>
void walkTable(const char* name, Walk walk) {
    llvm::Error error = llvm::Error::success();
    walk(error);
    if (error) {
        throw std::runtime_error(std::string(name) + ": " + llvm::toString(std::move(error)));
    }
}

// A name fills its field to the end or is followed by zeros.
template <std::size_t Size>
std::string textOf(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

int protectionOf(std::uint32_t machO) {
    return ((machO & MachO::VM_PROT_READ) != 0 ? PROT_READ : 0) |
           ((machO & MachO::VM_PROT_WRITE) != 0 ? PROT_WRITE : 0) |
           ((machO & MachO::VM_PROT_EXECUTE) != 0 ? PROT_EXEC : 0);
}

SectionKind kindOf(std::uint32_t flags) {
    switch (flags & MachO::SECTION_TYPE) {
    case MachO::S_MOD_INIT_FUNC_POINTERS:
        return SectionKind::Initialisers;
    case MachO::S_THREAD_LOCAL_VARIABLES:
        return SectionKind::ThreadLocalVariables;
    case MachO::S_THREAD_LOCAL_REGULAR:
    case MachO::S_THREAD_LOCAL_ZEROFILL:
        return SectionKind::ThreadLocalData;
    default:
        return SectionKind::Other;
    }
}

} // namespace

struct MachOFile::Reader {
    std::unique_ptr<llvm::MemoryBuffer> content;
    std::unique_ptr<MachOObjectFile> object;
};

MachOFile::MachOFile(const std::string& path) : reader_(std::make_unique<Reader>()) {
    reader_->content = contentOf(path);
    reader_->object = objectIn(path, *reader_->content);
    MachOObjectFile& object = *reader_->object;

    for (const auto& command : object.load_commands()) {
        if (command.C.cmd == MachO::LC_DYLD_CHAINED_FIXUPS) {
            throw std::runtime_error(path + " has chained pointers, which are not read here");
        }
        if (command.C.cmd != MachO::LC_SEGMENT_64) {
            continue;
        }
        const MachO::segment_command_64 segment = object.getSegment64LoadCommand(command);
        segments_.push_back({textOf(segment.segname),
                             segment.vmaddr,
                             segment.vmsize,
                             {object.getData().data() + segment.fileoff,
                              static_cast<std::size_t>(segment.filesize)},
                             protectionOf(segment.initprot)});
        for (std::uint32_t number = 0; number < segment.nsects; ++number) {
            const MachO::section_64 section = object.getSection64(command, number);
            sections_.push_back(
                {textOf(section.sectname), kindOf(section.flags), section.addr, section.size});
        }
    }

    walkTable("pointers to move", [&](llvm::Error& error) {
        for (const auto& entry : object.rebaseTable(error)) {
            pointersToMove_.push_back(entry.address());
        }
    });
    const auto keepBindings = [this](const auto& table, bool weak) {
        for (const auto& entry : table) {
            bindings_.push_back({entry.address(), entry.symbolName().str(), entry.addend(), weak});
        }
    };
    walkTable("symbols to bind",
              [&](llvm::Error& error) { keepBindings(object.bindTable(error), false); });
    walkTable("symbols to bind when called",
              [&](llvm::Error& error) { keepBindings(object.lazyBindTable(error), false); });
    walkTable("shared symbols",
              [&](llvm::Error& error) { keepBindings(object.weakBindTable(error), true); });
    walkTable("exports", [&](llvm::Error& error) {
        for (const auto& entry : object.exports(error)) {
            exports_.emplace(entry.name().str(), entry.address());
        }
    });
}

MachOFile::~MachOFile() = default;

std::vector<Section> MachOFile::sections(SectionKind kind) const {
    std::vector<Section> found;
    for (const Section& section : sections_) {
        if (section.kind == kind) {
            found.push_back(section);
        }
    }
    return found;
}

const Section* MachOFile::section(const std::string& name) const {
    for (const Section& section : sections_) {
        if (section.name == name) {
            return &section;
        }
    }
    return nullptr;
}

} // namespace loader
