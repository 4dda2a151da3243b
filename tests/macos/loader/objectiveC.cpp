#include "macos/loader/objectiveC.h"

#include <bit>
#include <string_view>

#include <objc/message.h>
#include <objc/runtime.h>

namespace {

struct FoundMethod {
    IMP code;
    SEL selector;
};

} // namespace

extern "C" {

__attribute__((used)) FoundMethod qvrLoaderMethod(id receiver, const char* name) {
    const SEL selector = sel_registerName(name);
    return {objc_msg_lookup(receiver, selector), selector};
}

void qvrLoaderSendMessage();
}

// Leaves all arguments as they are, but for the selector, and goes on in the method. They lie in
// six plain and eight vector registers; rax counts the latter for methods that take any number.
asm(R"(
    .text
    .type qvrLoaderSendMessage, @function
qvrLoaderSendMessage:
    push %rbp
    mov %rsp, %rbp
    sub $176, %rsp
    mov %rdi, -8(%rbp)
    mov %rdx, -16(%rbp)
    mov %rcx, -24(%rbp)
    mov %r8, -32(%rbp)
    mov %r9, -40(%rbp)
    mov %rax, -48(%rbp)
    movaps %xmm0, -64(%rbp)
    movaps %xmm1, -80(%rbp)
    movaps %xmm2, -96(%rbp)
    movaps %xmm3, -112(%rbp)
    movaps %xmm4, -128(%rbp)
    movaps %xmm5, -144(%rbp)
    movaps %xmm6, -160(%rbp)
    movaps %xmm7, -176(%rbp)
    call qvrLoaderMethod
    mov %rax, %r11
    mov %rdx, %rsi
    mov -8(%rbp), %rdi
    mov -16(%rbp), %rdx
    mov -24(%rbp), %rcx
    mov -32(%rbp), %r8
    mov -40(%rbp), %r9
    mov -48(%rbp), %rax
    movaps -64(%rbp), %xmm0
    movaps -80(%rbp), %xmm1
    movaps -96(%rbp), %xmm2
    movaps -112(%rbp), %xmm3
    movaps -128(%rbp), %xmm4
    movaps -144(%rbp), %xmm5
    movaps -160(%rbp), %xmm6
    movaps -176(%rbp), %xmm7
    leave
    jmp *%r11
    .size qvrLoaderSendMessage, . - qvrLoaderSendMessage
)");

namespace loader {

namespace {

template <typename Result>
Result send(void* receiver, const char* message) {
    const auto object = static_cast<id>(receiver);
    const SEL selector = sel_registerName(message);
    return std::bit_cast<Result (*)(id, SEL)>(objc_msg_lookup(object, selector))(object, selector);
}

void* pushPool() {
    return send<void*>(send<void*>(objc_getClass("NSAutoreleasePool"), "alloc"), "init");
}

// Pools made later in the thread go along.
void popPool(void* pool) {
    send<void>(pool, "release");
}

} // namespace

std::uintptr_t classSymbol(const std::string& symbol) {
    constexpr std::string_view beginning = "_OBJC_CLASS_$_";
    if (!symbol.starts_with(beginning)) {
        return 0;
    }
    return reinterpret_cast<std::uintptr_t>(objc_getClass(&symbol[beginning.size()]));
}

Symbols objectiveCSymbols() {
    return {
        {"_objc_msgSend", addressOf(qvrLoaderSendMessage)},
        {"_objc_autoreleasePoolPush", addressOf(pushPool)},
        {"_objc_autoreleasePoolPop", addressOf(popPool)},
        {"_objc_enumerationMutation", addressOf(objc_enumerationMutation)},
    };
}

} // namespace loader
