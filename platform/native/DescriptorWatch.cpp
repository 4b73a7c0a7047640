#include "platform/native/DescriptorWatch.h"

#include <utility>

namespace merro::platform::native {

DescriptorWatch::DescriptorWatch(int descriptor, std::function<bool()> isReadable)
    : m_thread([this, descriptor, isReadable = std::move(isReadable)] {
          while (waitUntilReadable(descriptor, m_end) && isReadable()) {
          }
      }) {}

DescriptorWatch::~DescriptorWatch() {
    m_end.raise();
    m_thread.join();
}

} // namespace merro::platform::native
