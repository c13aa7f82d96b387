#include "base/error.h"

#include <new>
#include <stdexcept>

#include "base/bytes.h"

namespace kestrel {

RunTimeError currentError() {
    try {
        throw;
    } catch (const RunTimeError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return {kOutOfMemory, L"Out of memory"};
    } catch (const std::length_error&) {
        // A text longer than the address space allows.
        return {kOutOfMemory, L"Out of memory"};
    } catch (const std::exception& error) {
        return {kInternalError, fromUtf8(error.what())};
    } catch (...) {
        return {kInternalError, L"Internal error"};
    }
}

}  // namespace kestrel
