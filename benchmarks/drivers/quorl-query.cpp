// Asks the quorl service for one configuration item as often as told.
//
//   quorl-query COUNT

#include "Measure.h"
#include "quorl/Quorl.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("quorl-query COUNT");
    }
    for (long i = bench::repetitions(argv[1]); i > 0; --i)
    {
        char* value = nullptr;
        if (quorl_getConfig("Bind-Address", &value) < 1)
        {
            bench::fail("no answer");
        }
        std::free(value);
    }
    return EXIT_SUCCESS;
}
