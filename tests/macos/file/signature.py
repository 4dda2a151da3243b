"""The signature at the end of a Mach-O file: a hash of each page, put there by the linker without a
certificate. macOS reads it before it runs any page on Apple's own processors."""

import hashlib
import struct

EMBEDDED_SIGNATURE = 0xFADE0CC0
CODE_DIRECTORY = 0xFADE0C02
AD_HOC = 0x2
LINKER_SIGNED = 0x20000
SHA256 = 2


class Signature:
    """Read from the bytes that LC_CODE_SIGNATURE names."""

    def __init__(self, blob):
        magic, self.length, count = struct.unpack_from(">3I", blob)
        if magic != EMBEDDED_SIGNATURE:
            raise ValueError("no signature")
        for index in range(count):
            _, offset = struct.unpack_from(">2I", blob, 12 + 8 * index)
            if struct.unpack_from(">I", blob, offset) == (CODE_DIRECTORY,):
                self._read_directory(blob[offset:])
                return
        raise ValueError("the signature has no code directory")

    def _read_directory(self, directory):
        (_, _, _, self.flags, hashes, name, _, page_count, self.code_size, hash_size,
         self.hash_kind, _, page_bits) = struct.unpack_from(">9I4B", directory)
        self.page_size = 1 << page_bits
        self.name = directory[name:directory.index(b"\0", name)].decode()
        self.hashes = [directory[at:at + hash_size]
                       for at in range(hashes, hashes + page_count * hash_size, hash_size)]

    def spoilt_pages(self, contents):
        """Numbers of the pages of the file that are not what was signed."""
        starts = range(0, self.code_size, self.page_size)
        found = [hashlib.sha256(contents[start:min(start + self.page_size, self.code_size)]).digest()
                 for start in starts]
        if len(found) != len(self.hashes):
            raise ValueError(f"{len(found)} pages, {len(self.hashes)} hashes")
        return [page for page, (is_now, signed) in enumerate(zip(found, self.hashes))
                if is_now != signed]
