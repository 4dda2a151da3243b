// The terminal in curses' hands: opened, drawn on, given back as it was.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace host {

// While a screen is open, standard output leads nowhere, so that stray prints of a library do not
// tear the picture. All calls but the construction and destruction come from one thread.
class TerminalScreen {
  public:
    enum class Ink { normal, faint, good, bad, bar, touch };

    static std::unique_ptr<TerminalScreen> open(std::string& problem);
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    int rows() const;
    int columns() const;
    bool unicode() const { return unicode_; }
    // The next key that was pressed, or 0. A changed size is taken in here.
    int key();

    void begin();
    void end();
    // Text that does not fit is cut off. `slot` picks the colour of `Ink::touch`.
    void text(int row, int column, const std::string& text, Ink ink = Ink::normal, int slot = 0);
    void box(int top, int left, int bottom, int right);

  private:
    TerminalScreen() = default;
    bool start();
    unsigned long attributes(Ink ink, int slot) const;

    std::FILE* output_ = nullptr; // the terminal itself
    int hiddenOutput_ = -1;       // standard output as it was
    void* screen_ = nullptr;
    bool unicode_ = false;
    bool colors_ = false;
};

} // namespace host
