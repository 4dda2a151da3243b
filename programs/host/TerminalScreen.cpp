#include "host/TerminalScreen.h"

#include <clocale>
#include <cstring>

#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>

// The macros of curses would replace our own names.
#define NCURSES_NOMACROS 1
#include <curses.h>

namespace host {

namespace {

// Colour pairs: 1 to 6 for the touches, then the others.
constexpr short slotColors[] = {COLOR_CYAN,    COLOR_YELLOW, COLOR_GREEN,
                                COLOR_MAGENTA, COLOR_RED,    COLOR_BLUE};
constexpr short slotPairs = 6;
constexpr short goodPair = 7;
constexpr short badPair = 8;
constexpr short barPair = 9;

} // namespace

std::unique_ptr<TerminalScreen> TerminalScreen::open(std::string& problem) {
    std::unique_ptr<TerminalScreen> screen(new TerminalScreen());
    if (!screen->start()) {
        problem = "this terminal cannot show the live picture, writing lines instead";
        return nullptr;
    }
    return screen;
}

bool TerminalScreen::start() {
    std::setlocale(LC_CTYPE, "");
    unicode_ = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    std::fflush(stdout);
    const int terminal = dup(STDOUT_FILENO);
    output_ = terminal >= 0 ? fdopen(terminal, "w") : nullptr;
    if (output_ == nullptr) {
        return false;
    }
    SCREEN* screen = newterm(nullptr, output_, stdin);
    if (screen == nullptr) {
        return false;
    }
    screen_ = screen;
    hiddenOutput_ = dup(STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    if (hiddenOutput_ >= 0 && nowhere >= 0) {
        dup2(nowhere, STDOUT_FILENO);
    }
    if (nowhere >= 0) {
        close(nowhere);
    }
    cbreak();
    noecho();
    curs_set(0);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    colors_ = has_colors() && start_color() == OK;
    if (colors_) {
        use_default_colors();
        for (short i = 0; i < slotPairs; ++i) {
            init_pair(static_cast<short>(i + 1), slotColors[i], -1);
        }
        init_pair(goodPair, COLOR_GREEN, -1);
        init_pair(badPair, COLOR_RED, -1);
        init_pair(barPair, COLOR_WHITE, COLOR_BLUE);
    }
    return true;
}

TerminalScreen::~TerminalScreen() {
    if (screen_ != nullptr) {
        endwin();
        delscreen(static_cast<SCREEN*>(screen_));
    }
    if (hiddenOutput_ >= 0) {
        std::fflush(stdout);
        dup2(hiddenOutput_, STDOUT_FILENO);
        close(hiddenOutput_);
    }
    if (output_ != nullptr) {
        std::fclose(output_);
    }
}

int TerminalScreen::rows() const {
    return getmaxy(stdscr);
}

int TerminalScreen::columns() const {
    return getmaxx(stdscr);
}

int TerminalScreen::key() {
    const int key = wgetch(stdscr);
    if (key == KEY_RESIZE) {
        wclear(stdscr);
        return 0;
    }
    return key == ERR ? 0 : key;
}

void TerminalScreen::begin() {
    werase(stdscr);
}

void TerminalScreen::end() {
    wrefresh(stdscr);
}

unsigned long TerminalScreen::attributes(Ink ink, int slot) const {
    const auto color = [this](int pair) {
        return colors_ ? static_cast<unsigned long>(COLOR_PAIR(pair)) : 0UL;
    };
    switch (ink) {
    case Ink::normal:
        return A_NORMAL;
    case Ink::faint:
        return A_DIM;
    case Ink::good:
        return A_BOLD | color(goodPair);
    case Ink::bad:
        return A_BOLD | color(badPair);
    case Ink::bar:
        return colors_ ? A_BOLD | color(barPair) : A_REVERSE;
    case Ink::touch:
        return A_BOLD | color(slot % slotPairs + 1);
    }
    return A_NORMAL;
}

void TerminalScreen::text(int row, int column, const std::string& text, Ink ink, int slot) {
    if (row < 0 || row >= rows() || column < 0 || column >= columns()) {
        return;
    }
    wattrset(stdscr, static_cast<int>(attributes(ink, slot)));
    wmove(stdscr, row, column);
    // Curses counts bytes, the terminal columns: cut between characters.
    std::size_t bytes = 0;
    int cells = 0;
    while (bytes < text.size()) {
        const bool begins = (static_cast<unsigned char>(text[bytes]) & 0xC0) != 0x80;
        if (begins && cells++ == columns() - column) {
            break;
        }
        ++bytes;
    }
    waddnstr(stdscr, text.c_str(), static_cast<int>(bytes));
    wattrset(stdscr, static_cast<int>(A_NORMAL));
}

void TerminalScreen::box(int top, int left, int bottom, int right) {
    wattrset(stdscr, static_cast<int>(A_DIM));
    mvwhline(stdscr, top, left + 1, ACS_HLINE, right - left - 1);
    mvwhline(stdscr, bottom, left + 1, ACS_HLINE, right - left - 1);
    mvwvline(stdscr, top + 1, left, ACS_VLINE, bottom - top - 1);
    mvwvline(stdscr, top + 1, right, ACS_VLINE, bottom - top - 1);
    mvwaddch(stdscr, top, left, ACS_ULCORNER);
    mvwaddch(stdscr, top, right, ACS_URCORNER);
    mvwaddch(stdscr, bottom, left, ACS_LLCORNER);
    mvwaddch(stdscr, bottom, right, ACS_LRCORNER);
    wattrset(stdscr, static_cast<int>(A_NORMAL));
}

} // namespace host
