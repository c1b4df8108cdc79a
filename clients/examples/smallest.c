/* The smallest client: a log of a job that draws nothing. usage: smallest LOG */

#include <orvlog-host.h>

int main(int argc, char** argv)
{
    ORV_Interface table;
    const ORVLOG_OpenOptions options = {.interface_out = &table, .log_path = argc > 1 ? argv[1] : "job.xml"};
    ORVLOG_Host* host = orvlog_open(&options);
    return orvlog_close(host) == 0 ? 0 : 1;
}
