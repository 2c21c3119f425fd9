// The exceptions of the C++ layer (velmora.hpp).
#ifndef VELMORA_ERRORS_HPP
#define VELMORA_ERRORS_HPP

#include <stdexcept>
#include <string>
#include <utility>

namespace velmora {

/* ------------------------------------------------------------------------ */
/* Errors                                                                    */
/* ------------------------------------------------------------------------ */

// A negative bridge status. what() reads "velmora: <code> <description>",
// followed by ": <SDK message>" when the SDK had one, and by the library's
// account of the failure (velmora_describeLastFailure) on the lines after.
class Error : public std::runtime_error {
public:
    Error(int code, std::string description, std::string sdkMessage, std::string failure = {})
        : std::runtime_error(compose(code, description, sdkMessage, failure)),
          code_(code),
          description_(std::move(description)),
          sdkMessage_(std::move(sdkMessage)),
          failure_(std::move(failure)) {}

    // The status code (a velmora_status value).
    int code() const noexcept { return code_; }
    // The library's text for the code (velmora_describeStatusCode).
    const std::string &description() const noexcept { return description_; }
    // The management object's getLastErrorMessage() at the time of the
    // failure; empty when there was none or no management object.
    const std::string &sdkMessage() const noexcept { return sdkMessage_; }
    // The library's account of the failure: the Java exception with its stack
    // for -13, the missing method for -12, the cause and next step of a
    // start-up failure.
    const std::string &failure() const noexcept { return failure_; }

private:
    static std::string compose(int code, const std::string &description, const std::string &sdkMessage,
                               const std::string &failure) {
        std::string text = "velmora: " + std::to_string(code) + " " + description;
        if (!sdkMessage.empty()) text += ": " + sdkMessage;
        if (!failure.empty()) text += "\n" + failure;
        return text;
    }
    int code_;
    std::string description_;
    std::string sdkMessage_;
    std::string failure_;
};

// -11: Java not started, no management object, or (for Peach) no wrapper.
class NotInitialized : public Error {
    using Error::Error;
};
// -12: the SDK lacks the Java method with that name and signature.
class MethodNotFound : public Error {
    using Error::Error;
};
// -13: the Java method threw (the JVM printed it on its error stream).
class JavaException : public Error {
    using Error::Error;
};
// -14, -15, -16, -22: start-up or creating the management object failed.
class StartupError : public Error {
    using Error::Error;
};

}  // namespace velmora

#endif
