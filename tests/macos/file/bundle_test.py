"""What lies in the bundle, read as a file. Nothing of it is run here.

Usage: bundle_test.py BUNDLE ARCHITECTURES VERSION SOURCE TOOLS

TOOLS is the folder of LLVM's programs."""

import pathlib
import plistlib
import re
import sys
import unittest

from macholib import mach_o
from macholib.MachO import MachO
from macholib.SymbolTable import SymbolTable

from exports import exported, plain_names
from signature import AD_HOC, LINKER_SIGNED, SHA256, Signature

bundle = pathlib.Path(sys.argv.pop(1))
architectures = sys.argv.pop(1).split(",")
version = sys.argv.pop(1)
source = pathlib.Path(sys.argv.pop(1))
tools = pathlib.Path(sys.argv.pop(1))
binary = bundle / "Contents/MacOS/qvr_touch"


def commands(header, kind):
    return [(command, data) for load, command, data in header.commands if load.cmd == kind]


def only(found):
    if len(found) != 1:
        raise ValueError(f"{len(found)} instead of one")
    return found[0]


class File(unittest.TestCase):
    """Each test looks at the file of each kind of processor in turn."""

    @classmethod
    def setUpClass(cls):
        cls.contents = binary.read_bytes()
        cls.files = dict(zip(architectures, MachO(str(binary)).headers, strict=True))

    def signed(self, header):
        """The bytes of one file in the bundle's, and its signature."""
        contents = self.contents[header.offset:header.offset + header.size]
        command, _ = only(commands(header, mach_o.LC_CODE_SIGNATURE))
        end = command.dataoff + command.datasize
        self.assertEqual(end, len(contents), "something lies behind the signature")
        return contents, command.dataoff, Signature(contents[command.dataoff:end])

    def test_is_a_bundle_with_symbols_looked_up_by_library(self):
        for architecture, header in self.files.items():
            processor = mach_o.CPU_TYPE_NAMES[header.header.cputype]
            self.assertEqual(processor.lower(), architecture)
            self.assertEqual(header.header.filetype, mach_o.MH_BUNDLE)
            self.assertEqual(header.header.flags,
                             mach_o.MH_NOUNDEFS | mach_o.MH_DYLDLINK | mach_o.MH_TWOLEVEL |
                             mach_o.MH_HAS_TLV_DESCRIPTORS)

    def test_exports_what_the_library_of_other_systems_exports(self):
        demangler = tools / "llvm-cxxfilt"
        listed = (source / "tests/client/exported_symbols.txt").read_text().split()
        expected = plain_names(listed, demangler)
        for architecture in self.files:
            found = plain_names(exported(binary, architecture, tools / "llvm-objdump"), demangler)
            # The list is without the tables of classes, which are weak symbols elsewhere.
            tables = {name for name in found if re.match(r"(vtable|typeinfo|typeinfo name) for ", name)}
            self.assertEqual(tables, {f"{kind} for QVR::{of}"
                                      for kind in ("vtable", "typeinfo", "typeinfo name")
                                      for of in ("NetworkClient", "TcpClientWin")})
            self.assertEqual({name: count for name, count in found.items() if name not in tables},
                             dict(expected))

    def test_loads_the_system_and_nothing_else(self):
        for header in self.files.values():
            loading = (mach_o.LC_LOAD_DYLIB, mach_o.LC_LOAD_WEAK_DYLIB, mach_o.LC_REEXPORT_DYLIB,
                       mach_o.LC_LOAD_UPWARD_DYLIB, mach_o.LC_LAZY_LOAD_DYLIB)
            names = [data.rstrip(b"\0").decode()
                     for kind in loading for _, data in commands(header, kind)]
            self.assertCountEqual(names, [
                "/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit",
                "/usr/lib/libSystem.B.dylib",
                "/usr/lib/libobjc.A.dylib",
            ])
            self.assertEqual(commands(header, mach_o.LC_RPATH), [])

    def test_runs_on_macos_11_and_newer(self):
        for header in self.files.values():
            command, _ = only(commands(header, mach_o.LC_BUILD_VERSION))
            self.assertEqual(command.platform, mach_o.PLATFORM_MACOS)
            self.assertEqual(command.minos, 11 << 16)

    def test_has_what_only_macos_has(self):
        for header in self.files.values():
            table = SymbolTable(MachO(str(binary)), header)
            missing = {name.decode() for _, name in table.undefsyms}
            for name in ("_OBJC_CLASS_$_NSWorkspace", "_objc_msgSend", "_setsockopt"):
                self.assertIn(name, missing)
            contents, _, _ = self.signed(header)
            self.assertIn(b"ERROR SO_NOSIGPIPE failed. Not good at all\0", contents)

    def test_has_assertions_and_the_stack_protector(self):
        for header in self.files.values():
            table = SymbolTable(MachO(str(binary)), header)
            missing = {name.decode() for _, name in table.undefsyms}
            self.assertIn("___assert_rtn", missing)
            self.assertIn("___stack_chk_fail", missing)

    def test_no_segment_is_written_and_run(self):
        for header in self.files.values():
            for command, _ in commands(header, mach_o.LC_SEGMENT_64):
                self.assertNotEqual(command.initprot & 6, 6, command.segname)

    def test_tells_nothing_of_where_it_was_built(self):
        for path in (str(source), "macos-tools"):
            self.assertNotIn(path.encode(), self.contents)

    def test_signature_fits_every_page(self):
        for header in self.files.values():
            contents, start, signature = self.signed(header)
            self.assertEqual(signature.flags, AD_HOC | LINKER_SIGNED)
            self.assertEqual(signature.hash_kind, SHA256)
            self.assertEqual(signature.name, "qvr_touch")
            self.assertEqual(signature.code_size, start)
            self.assertEqual(signature.spoilt_pages(contents), [])

    def test_signature_notices_one_bit_anywhere(self):
        for header in self.files.values():
            contents, start, signature = self.signed(header)
            for place in (0, 4095, 4096, start // 2, start - 1):
                spoilt = bytearray(contents)
                spoilt[place] ^= 1
                self.assertEqual(signature.spoilt_pages(bytes(spoilt)),
                                 [place // signature.page_size])


class Folder(unittest.TestCase):
    def test_holds_two_files(self):
        found = {str(path.relative_to(bundle)) for path in bundle.rglob("*") if path.is_file()}
        self.assertEqual(found, {"Contents/Info.plist", "Contents/MacOS/qvr_touch"})
        self.assertTrue(binary.stat().st_mode & 0o111, "not executable")

    def test_property_list_says_what_hosts_ask_for(self):
        self.assertEqual(plistlib.loads((bundle / "Contents/Info.plist").read_bytes()), {
            "CFBundleDevelopmentRegion": "en",
            "CFBundleExecutable": "qvr_touch",
            "CFBundleIdentifier": "touch.qvr.plugin",
            "CFBundleInfoDictionaryVersion": "6.0",
            "CFBundleName": "qvr_touch",
            "CFBundlePackageType": "BNDL",
            "CFBundleShortVersionString": version,
            "CFBundleSupportedPlatforms": ["MacOSX"],
            "CFBundleVersion": version,
            "LSMinimumSystemVersion": "11.0",
        })


unittest.main()
