#include "watchdog/DescriptorChannel.h"

#include <cstring>

#include <sys/socket.h>
#include <sys/uio.h>

namespace orvo::simulator
{

namespace
{
/// A message of one byte with room for one descriptor beside it.
struct Envelope
{
    Envelope()
    {
        header.msg_iov = &content;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }
    Envelope(const Envelope&) = delete;
    Envelope& operator=(const Envelope&) = delete;

    char byte{0};
    iovec content{&byte, sizeof byte};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
    msghdr header{};
};
} // namespace

bool sendDescriptor(int channel, const Descriptor& descriptor)
{
    Envelope envelope;
    cmsghdr* const attachment = CMSG_FIRSTHDR(&envelope.header);
    attachment->cmsg_level = SOL_SOCKET;
    attachment->cmsg_type = SCM_RIGHTS;
    attachment->cmsg_len = CMSG_LEN(sizeof(int));
    const int number = descriptor.get();
    std::memcpy(CMSG_DATA(attachment), &number, sizeof number);
    return sendmsg(channel, &envelope.header, MSG_NOSIGNAL) == 1;
}

Descriptor receiveDescriptor(int channel)
{
    Envelope envelope;
    if (recvmsg(channel, &envelope.header, MSG_CMSG_CLOEXEC) != 1)
    {
        return Descriptor();
    }
    const cmsghdr* const attachment = CMSG_FIRSTHDR(&envelope.header);
    if (attachment == nullptr || attachment->cmsg_type != SCM_RIGHTS)
    {
        return Descriptor();
    }
    int number = -1;
    std::memcpy(&number, CMSG_DATA(attachment), sizeof number);
    return Descriptor(number);
}

} // namespace orvo::simulator
