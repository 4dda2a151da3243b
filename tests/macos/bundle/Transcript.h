// What a plug-in was asked, what it answered, and what it said meanwhile: a list of texts in which
// two builds are compared. Numbers are written so that no bit is lost.
#pragma once

#include "macos/bundle/Plugin.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

class Transcript {
  public:
    // Receives the plug-in's messages while it lives; one at a time.
    explicit Transcript(const Plugin& plugin);
    ~Transcript();
    Transcript(const Transcript&) = delete;
    Transcript& operator=(const Transcript&) = delete;

    void add(const std::string& question, int answer);
    void add(const std::string& question, float answer);
    void add(const std::string& question, const std::string& answer);
    // Many bytes shorten to one number.
    void addBytes(const std::string& question, const void* bytes, std::size_t size);

    // Writes `replacement` where `text` stands in what follows: what no two runs have in common.
    void replace(const std::string& text, const std::string& replacement);

    const std::vector<std::string>& lines() const { return lines_; }
    // How many lines are just this.
    long count(const std::string& line) const;

  private:
    static void receive(const char* message);
    void append(std::string line);

    const Plugin& plugin_;
    std::map<std::string, std::string> replacements_;
    std::vector<std::string> lines_;
};
