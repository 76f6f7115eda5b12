#include "audio/port_config.h"

#include <cstdio>
#include <utility>

namespace {

int fail(const char* message)
{
    fputs(message, stderr);
    return -1;
}

}

int qd_open_audio_port(
    const char* name, const char* direction, ALconfig& conf, ALport& port, long stream)
{
    qd_close_audio_port(conf, port);
    conf = ALnewconfig();
    if (conf == nullptr)
        return fail("Config allocation error\n");
    if (ALsetchannels(conf, 1) < 0)
        return fail("Setting channel error\n");
    if (ALsetqueuesize(conf, 1600) < 0)
        return fail("Setting queue size error\n");
    if (ALsetwidth(conf, 2) < 0)
        return fail("Setting sample width error\n");
    qd_al_set_stream(conf, stream);
    port = ALopenport(name, direction, conf);
    return port != nullptr ? 0 : -1;
}

void qd_close_audio_port(ALconfig& conf, ALport& port)
{
    if (port != nullptr)
        ALcloseport(std::exchange(port, nullptr));
    if (conf != nullptr)
        ALfreeconfig(std::exchange(conf, nullptr));
}
