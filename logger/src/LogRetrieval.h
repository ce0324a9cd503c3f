#pragma once

#include <string>
#include <vector>

struct redisContext;

namespace orvo::Logger
{

// Reading the list back over a connection that is in order; what each answers on which failure is
// told at RedisLogger. None of them gives the connection up.

std::vector<std::string> readEntries(redisContext* connection, const std::string& listKey,
                                     int first, int last);
std::vector<std::string> readFilteredEntries(redisContext* connection, const std::string& listKey,
                                             int first, int last, const std::string& condition);
int countEntries(redisContext* connection, const std::string& listKey);
int clearEntries(redisContext* connection, const std::string& listKey);

} // namespace orvo::Logger
