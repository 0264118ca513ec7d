#include "platform/ErrorText.hpp"

#include <cstring>

namespace veldan::platform {

std::string errorText(int error) {
    const char* text = ::strerrordesc_np(error);
    return text ? text : "error " + std::to_string(error);
}

}  // namespace veldan::platform
