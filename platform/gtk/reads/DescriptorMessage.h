#pragma once

#include "base/FileDescriptor.h"

#include <cstddef>
#include <optional>
#include <span>

namespace quillmere::platform::gtk {

/// Messages of a fixed size over a local socket that keeps their borders, each with one descriptor or none. Neither
/// waits. Any thread.
namespace descriptorMessage {

/// False when the other side is gone or does not read.
bool send(int socket, std::span<const std::byte> message, int descriptor = -1) noexcept;

enum class State { received, nothing, closed };
struct Received {
    State state = State::closed;
    FileDescriptor descriptor{};
};
/// Fills `message`; one of another size closes the conversation.
Received receive(int socket, std::span<std::byte> message) noexcept;

template <typename Message>
bool send(int socket, const Message& message, int descriptor = -1) noexcept {
    return send(socket, std::as_bytes(std::span(&message, 1)), descriptor);
}
template <typename Message>
Received receive(int socket, Message& message) noexcept {
    return receive(socket, std::as_writable_bytes(std::span(&message, 1)));
}

} // namespace descriptorMessage

} // namespace quillmere::platform::gtk
