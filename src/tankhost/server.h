#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "base/packed.h"
#include "tankhost/operations.h"

namespace kestrel::tankhost {

// Answers questions with the library that it is told to load.
class Server {
  public:
    // What is not understood, or fails, is answered with an error.
    std::string answer(std::string_view question);

  private:
    void answer(Ask ask, PackedReader& question, PackedWriter& answer);
    void load(PackedReader& question, PackedWriter& answer);
    void children(PackedReader& question, PackedWriter& answer);
    void openChild(PackedReader& question, PackedWriter& answer);
    void readChild(PackedReader& question, PackedWriter& answer);
    Entry entry(TankHandle tank, ChildHandle child) const;

    std::unique_ptr<const Operations> library_;
    std::map<std::int32_t, const char*> opened_;  // data, by their numbers
    std::int32_t lastData_ = 0;
};

}  // namespace kestrel::tankhost
