#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kestrel {

// A temporary file without a name, for what should take no memory. The system removes it with
// this object, and with the program, however that ends. Failures throw RunTimeError.
class ScratchFile {
  public:
    ScratchFile();
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    std::uint64_t size() const noexcept { return size_; }
    void append(std::string_view bytes);
    // The bytes from `at` on, `most` at most.
    std::string read(std::uint64_t at, std::size_t most) const;
    // Hands all of it to `use`, without a copy.
    void whole(const std::function<void(std::string_view)>& use) const;

  private:
    struct System;
    std::unique_ptr<System> system_;
    std::uint64_t size_ = 0;
};

}  // namespace kestrel
