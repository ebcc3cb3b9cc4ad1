#include "core/Guard.h"

#include <Standard_Failure.hxx>

#include <exception>

namespace tarvo::kernel {

std::string current_exception_text() {
    try {
        throw;
    } catch (const Standard_Failure& failure) {
        const char* text = failure.GetMessageString();
        return std::string("OpenCASCADE ") + failure.DynamicType()->Name() +
               (text && *text ? std::string(": ") + text : std::string());
    } catch (const std::string& text) {
        return "Gmsh: " + text;
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "unknown exception";
    }
}

} // namespace tarvo::kernel
