#include "context.h"

#include "source_uri.h"

#include <stdexcept>
#include <utility>

namespace camera {
namespace {

struct ContextState {
    Enumeration enumeration;
    std::unique_ptr<rs_context> context;
    int users = 0;
};

// Never destroyed: a program may delete its context from a destructor that runs at exit.
ContextState& state() {
    static ContextState* const shared = new ContextState;
    return *shared;
}

std::unique_ptr<rs_context> makeContext(const Enumeration& enumeration) {
    auto context = std::make_unique<rs_context>();
    for (auto& camera : enumeration ? enumeration() : defaultDevices()) {
        context->devices.push_back(std::make_unique<rs_device>(rs_device{std::move(camera)}));
    }
    return context;
}

} // namespace

void setEnumeration(Enumeration enumeration) {
    state().enumeration = std::move(enumeration);
    if (!state().context) {
        state().users = 0;
    }
}

rs_context* acquireContext() {
    if (state().users++ == 0) {
        state().context = makeContext(state().enumeration);
    }
    return state().context.get();
}

void releaseContext(const rs_context* context) {
    if (context != state().context.get()) {
        throw std::runtime_error("the context has been deleted already");
    }
    if (--state().users == 0) {
        state().context.reset();
    }
}

} // namespace camera
