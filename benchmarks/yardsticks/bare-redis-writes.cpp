// Appends a finished record, trims the list, publishes the record, with the bare hiredis; prints
// records per second.
//
//   bare-redis-writes REDIS-SOCKET COUNT

#include "Measure.h"
#include "WrittenMessage.h"

#include <hiredis/hiredis.h>

#include <memory>

namespace
{

struct ConnectionDeleter
{
    void operator()(redisContext* connection) const { redisFree(connection); }
};

void writeRecord(redisContext* connection)
{
    redisAppendCommand(connection, "RPUSH %s %b", bench::kList, bench::kRecord,
                       bench::kRecordLength);
    redisAppendCommand(connection, "LTRIM %s -%d -1", bench::kList, bench::kListLength);
    redisAppendCommand(connection, "PUBLISH %s %b", bench::kList, bench::kRecord,
                       bench::kRecordLength);
    for (int answer = 0; answer < 3; ++answer)
    {
        void* reply = nullptr;
        if (redisGetReply(connection, &reply) != REDIS_OK)
        {
            bench::fail("Redis does not answer");
        }
        freeReplyObject(reply);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        bench::fail("bare-redis-writes REDIS-SOCKET COUNT");
    }
    const long count = bench::repetitions(argv[2]);
    const std::unique_ptr<redisContext, ConnectionDeleter> connection(redisConnectUnix(argv[1]));
    if (connection == nullptr || connection->err != 0)
    {
        bench::fail("no Redis at this socket");
    }
    const double begin = bench::wallSeconds();
    for (long record = 0; record < count; ++record)
    {
        writeRecord(connection.get());
    }
    std::printf("%.1f\n", static_cast<double>(count) / (bench::wallSeconds() - begin));
    return EXIT_SUCCESS;
}
