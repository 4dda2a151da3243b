/* The exception that carries a camera error through C++ code. */
#ifndef LIBREALSENSE_RS_HPP
#define LIBREALSENSE_RS_HPP

#include <stdexcept>
#include <string>

#include <librealsense/rs.h>

namespace rs {

class error : public std::runtime_error {
  public:
    /* Copies what `err` (never null) says, then frees it. */
    error(rs_error* err)
        : std::runtime_error(text(rs_get_error_message(err))),
          function_(text(rs_get_failed_function(err))), args_(text(rs_get_failed_args(err))) {
        rs_free_error(err);
    }

    const std::string& get_failed_function() const { return function_; }
    const std::string& get_failed_args() const { return args_; }

    /* Throws when `e` is an error and takes it over; does nothing for null. */
    static void handle(rs_error* e) {
        if (e) {
            throw error(e);
        }
    }

  private:
    static std::string text(const char* given) { return given ? given : ""; }

    std::string function_;
    std::string args_;
};

} // namespace rs

#endif
