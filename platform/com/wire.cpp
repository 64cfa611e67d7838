#include <platform/com/wire.h>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace {

// Above 0: bytes; 0: none at present; below: the connection has ended.
ssize_t Receive(int socket, void *to, std::size_t size) {
    ssize_t got;
    do {
        got = recv(socket, to, size, MSG_DONTWAIT);
    } while (got < 0 && errno == EINTR);
    if (got > 0) return got;
    return got < 0 && errno == EAGAIN ? 0 : -1;
}

} // namespace

bool FrameReader::Is_Acceptable() const {
    const FrameHeader &header = frame_.header;
    if (header.magic != FrameHeader::Magic || header.size > Largest_Message) return false;
    if (expected_ == FrameDirection::Answer) return header.kind == FrameKind::Answer;
    return header.kind >= FrameKind::Create && header.kind <= FrameKind::Call;
}

Passage FrameReader::Read(int socket) {
    while (header_bytes_ < sizeof(FrameHeader)) {
        char *const to = reinterpret_cast<char *>(&frame_.header) + header_bytes_;
        const ssize_t got = Receive(socket, to, sizeof(FrameHeader) - header_bytes_);
        if (got <= 0) return got == 0 ? Passage::Under_Way : Passage::Ended;
        header_bytes_ += static_cast<std::size_t>(got);
    }
    if (!Is_Acceptable()) return Passage::Ended;
    // Room is made for what has come, not for what was announced.
    char piece[16384];
    while (frame_.body.size() < frame_.header.size) {
        const std::size_t missing = frame_.header.size - frame_.body.size();
        const ssize_t got = Receive(socket, piece, std::min(missing, sizeof piece));
        if (got <= 0) return got == 0 ? Passage::Under_Way : Passage::Ended;
        frame_.body.append(piece, static_cast<std::size_t>(got));
    }
    return Passage::Done;
}

Frame FrameReader::Take() {
    header_bytes_ = 0;
    return std::exchange(frame_, Frame());
}

void FrameWriter::Begin(const Frame &frame) {
    FrameHeader header = frame.header;
    header.size = static_cast<std::uint32_t>(frame.body.size());
    bytes_.assign(reinterpret_cast<const char *>(&header), sizeof header);
    bytes_ += frame.body;
    written_ = 0;
}

Passage FrameWriter::Write(int socket) {
    while (written_ < bytes_.size()) {
        const ssize_t wrote =
            send(socket, bytes_.data() + written_, bytes_.size() - written_, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote < 0) return errno == EAGAIN ? Passage::Under_Way : Passage::Ended;
        written_ += static_cast<std::size_t>(wrote);
    }
    bytes_ = {};
    written_ = 0;
    return Passage::Done;
}
