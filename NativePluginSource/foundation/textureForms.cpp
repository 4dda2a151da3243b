#include "foundation/textureForms.h"

#include <atomic>
#include <cstring>

namespace QVR {

namespace {

const TextureForm& fastest() {
    const TextureForm* form = &plainTextureForm;
    for (const VectorTextureForm& vector : vectorTextureForms()) {
        form = vector.supported ? vector.form : form;
    }
    return *form;
}

std::atomic<const TextureForm*> forced{nullptr};

} // namespace

const TextureForm* findTextureForm(const char* name) {
    for (const VectorTextureForm& vector : vectorTextureForms()) {
        if (std::strcmp(vector.form->name, name) == 0) {
            return vector.supported ? vector.form : nullptr;
        }
    }
    return std::strcmp(plainTextureForm.name, name) == 0 ? &plainTextureForm : nullptr;
}

const TextureForm& activeTextureForm() {
    static const TextureForm& chosen = fastest();
    const TextureForm* const other = forced.load(std::memory_order_acquire);
    return other != nullptr ? *other : chosen;
}

void forceTextureForm(const TextureForm* form) {
    forced.store(form, std::memory_order_release);
}

} // namespace QVR
