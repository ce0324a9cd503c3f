// A stored log configuration as others wrote it, which the operator's command shows, and changes by
// one mask: what it stores is what a logger reads at its next start.
//
// Shape: the mask in the first line, then the stored text.

#include "FuzzTarget.h"

#include "Claim.h"
#include "LoggedDevice.h"
#include "RedisClient.h"

#include "bus/InputReader.h"

#include "LogConfiguration.h"
#include "log/LevelMask.h"
#include "log/LogConfig.h"
#include "logger/LogDefaults.h"

#include <string>
#include <vector>

#include <unistd.h>

namespace
{

using namespace orvo::ctl;
using orvo::fuzz::claim;
using namespace orvo::Logger;

constexpr char kSource[] = "wardex";

/// The servers of the device, and what is stored for its supervisor.
struct Store
{
    orvo::test::LoggedDevice device;
    orvo::test::RedisClient client{kConfigSocket};

    void put(const std::string& text) { client.command({"HSET", kConfigHash, kSource, text}); }
    std::string get() { return client.command({"HGET", kConfigHash, kSource}).text; }
};

/// As a logger that starts would read it.
LogSettings settingsOf(const std::string& text)
{
    LogSettings settings;
    (void)readConfiguration(text.c_str(), kSource, getpid(), settings);
    return settings;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Never destroyed: the servers end with their box.
    static auto* store = new Store;
    orvo::fuzz::InputReader input(data, size);
    const std::string word = input.line();
    const std::string text = input.bytes(size);
    store->put(text);

    const std::vector<orvo::ReadRecord> none;
    const SourceMask before = LogConfig(none).maskOf(kSource);
    std::string complaint;
    const auto mask = maskOf(word, before.mask, complaint);
    claim(mask.has_value() == complaint.empty(), "a mask or a complaint");
    if (mask && LogConfig::save(kSource, *mask))
    {
        claim(settingsOf(store->get()).mask == *mask, "a logger reads what was stored");
        claim(LogConfig(none).maskOf(kSource).mask == *mask, "and so does the command");
    }
    return 0;
}
