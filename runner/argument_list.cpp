#include "runner/argument_list.h"

#include <cstdlib>

namespace quillory {

ArgumentList::~ArgumentList() {
  for (int i = 0; i < count; ++i) std::free((*this)[i]);
}

}  // namespace quillory
