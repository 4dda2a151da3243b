// Texts and numbers under a locale of the caller's. The bundle makes none, so it always means the
// classic one; and the kinds of letters, which macOS keeps in a table that programs read.
#include "macos/loader/system/errors.h"

#include <array>
#include <cctype>
#include <clocale>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwchar>

#include <locale.h>

namespace loader {

namespace {

locale_t classic() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

// The calling thread's locale is the classic one while this lives.
class InClassic {
  public:
    InClassic() : before_(uselocale(classic())) {}
    ~InClassic() { uselocale(before_); }
    InClassic(const InClassic&) = delete;
    InClassic& operator=(const InClassic&) = delete;

  private:
    locale_t before_;
};

using Locale = const void*; // null

// ---- Numbers ----

int formatText(char* text, std::size_t size, Locale, const char* format, ...) {
    const InClassic inClassic;
    va_list values;
    va_start(values, format);
    const int result = std::vsnprintf(text, size, format, values);
    va_end(values);
    return result;
}

int formatNewText(char** text, Locale, const char* format, ...) {
    const InClassic inClassic;
    va_list values;
    va_start(values, format);
    const int result = vasprintf(text, format, values);
    va_end(values);
    return result;
}

int readText(const char* text, Locale, const char* format, ...) {
    const InClassic inClassic;
    va_list places;
    va_start(places, format);
    const int result = std::vsscanf(text, format, places);
    va_end(places);
    return result;
}

double readDouble(const char* text, char** end, Locale) {
    return withErrno([&] { return strtod_l(text, end, classic()); });
}
float readFloat(const char* text, char** end, Locale) {
    return withErrno([&] { return strtof_l(text, end, classic()); });
}
long double readLongDouble(const char* text, char** end, Locale) {
    return withErrno([&] { return strtold_l(text, end, classic()); });
}
long long readInteger(const char* text, char** end, int base, Locale) {
    return withErrno([&] { return strtoll_l(text, end, base, classic()); });
}
unsigned long long readUnsigned(const char* text, char** end, int base, Locale) {
    return withErrno([&] { return strtoull_l(text, end, base, classic()); });
}

// The texts come first in both systems, and the numbers behind them say "unknown" in this locale,
// in whatever order.
lconv* conventions(Locale) {
    const InClassic inClassic;
    return std::localeconv();
}

std::size_t formatTime(char* text, std::size_t size, const char* format, const tm* time, Locale) {
    return strftime_l(text, size, format, time, classic());
}

// ---- Wide letters. The state is smaller here than there, and zero means the beginning in both
// ----

std::size_t lengthOfLetter(const char* text, std::size_t size, mbstate_t* state, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return std::mbrlen(text, size, state); });
}
std::size_t widen(wchar_t* letter, const char* text, std::size_t size, mbstate_t* state, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return std::mbrtowc(letter, text, size, state); });
}
int widenAlone(wchar_t* letter, const char* text, std::size_t size, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return std::mbtowc(letter, text, size); });
}
std::size_t widenSome(wchar_t* letters, const char** text, std::size_t size, std::size_t count,
                      mbstate_t* state, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return mbsnrtowcs(letters, text, size, count, state); });
}
std::size_t widenAll(wchar_t* letters, const char** text, std::size_t count, mbstate_t* state,
                     Locale) {
    const InClassic inClassic;
    return withErrno([&] { return std::mbsrtowcs(letters, text, count, state); });
}
std::size_t narrow(char* text, wchar_t letter, mbstate_t* state, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return std::wcrtomb(text, letter, state); });
}
std::size_t narrowSome(char* text, const wchar_t** letters, std::size_t count, std::size_t size,
                       mbstate_t* state, Locale) {
    const InClassic inClassic;
    return withErrno([&] { return wcsnrtombs(text, letters, count, size, state); });
}

int longestLetter(Locale) {
    return 1;
}

void forgetLocale(Locale) {}

// ---- Message catalogues: there are none ----

void* openCatalogue(const char*, int) {
    return reinterpret_cast<void*>(-1);
}
char* textOfCatalogue(void*, int, int, const char* otherwise) {
    return const_cast<char*>(otherwise);
}
int closeCatalogue(void*) {
    return 0;
}

// ---- Kinds of letters ----

constexpr int letters = 256;

struct LetterTable {
    std::array<char, 8> magic;
    std::array<char, 32> encoding;
    std::array<void*, 2> functions;
    std::int32_t invalid;
    std::array<std::uint32_t, letters> kinds;
    std::array<std::int32_t, letters> lower;
    std::array<std::int32_t, letters> upper;
    std::array<char, 128> rest; // for what lies beyond
};

std::uint32_t kindsOf(int letter) {
    std::uint32_t kinds = 0;
    const auto add = [&kinds](int belongs, std::uint32_t kind) {
        kinds |= belongs != 0 ? kind : 0;
    };
    add(isalpha_l(letter, classic()), 0x100);
    add(iscntrl_l(letter, classic()), 0x200);
    add(isdigit_l(letter, classic()), 0x400);
    add(isgraph_l(letter, classic()), 0x800);
    add(islower_l(letter, classic()), 0x1000);
    add(ispunct_l(letter, classic()), 0x2000);
    add(isspace_l(letter, classic()), 0x4000);
    add(isupper_l(letter, classic()), 0x8000);
    add(isxdigit_l(letter, classic()), 0x10000);
    add(isblank_l(letter, classic()), 0x20000);
    add(isprint_l(letter, classic()), 0x40000);
    return kinds;
}

LetterTable& letterTable() {
    static LetterTable table = [] {
        LetterTable made{};
        for (int letter = 0; letter < letters; ++letter) {
            const auto place = static_cast<std::size_t>(letter);
            made.kinds.at(place) = kindsOf(letter);
            made.lower.at(place) = tolower_l(letter, classic());
            made.upper.at(place) = toupper_l(letter, classic());
        }
        return made;
    }();
    return table;
}

int isOfKind(int letter, unsigned long kinds) {
    const bool known = letter >= 0 && letter < letters;
    return known
               ? static_cast<int>(letterTable().kinds.at(static_cast<std::size_t>(letter)) & kinds)
               : 0;
}
int isOfKindIn(int letter, unsigned long kinds, Locale) {
    return isOfKind(letter, kinds);
}
int lowered(int letter) {
    return tolower_l(letter, classic());
}
int raised(int letter) {
    return toupper_l(letter, classic());
}

} // namespace

Symbols localeSymbols() {
    return {
        {"_snprintf_l", addressOf(formatText)},
        {"_asprintf_l", addressOf(formatNewText)},
        {"_sscanf_l", addressOf(readText)},
        {"_strtod_l", addressOf(readDouble)},
        {"_strtof_l", addressOf(readFloat)},
        {"_strtold_l", addressOf(readLongDouble)},
        {"_strtoll_l", addressOf(readInteger)},
        {"_strtoull_l", addressOf(readUnsigned)},
        {"_strftime_l", addressOf(formatTime)},
        {"_localeconv", addressOf(std::localeconv)},
        {"_localeconv_l", addressOf(conventions)},
        {"_mbrlen_l", addressOf(lengthOfLetter)},
        {"_mbrtowc_l", addressOf(widen)},
        {"_mbtowc_l", addressOf(widenAlone)},
        {"_mbsnrtowcs_l", addressOf(widenSome)},
        {"_mbsrtowcs_l", addressOf(widenAll)},
        {"_wcrtomb_l", addressOf(narrow)},
        {"_wcsnrtombs_l", addressOf(narrowSome)},
        {"____mb_cur_max_l", addressOf(longestLetter)},
        {"_freelocale", addressOf(forgetLocale)},
        {"_catopen", addressOf(openCatalogue)},
        {"_catgets", addressOf(textOfCatalogue)},
        {"_catclose", addressOf(closeCatalogue)},
        {"__DefaultRuneLocale", addressOf(&letterTable())},
        {"___maskrune", addressOf(isOfKind)},
        {"___maskrune_l", addressOf(isOfKindIn)},
        {"___tolower", addressOf(lowered)},
        {"___toupper", addressOf(raised)},
    };
}

} // namespace loader
