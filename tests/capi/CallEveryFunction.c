/* Compiled as C99 with -pedantic-errors: the header is plain C, and every
   function links and runs from C. */
#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

void akvo_test_call_every_function(void);

void akvo_test_call_every_function(void)
{
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t first = 0;
    uint64_t second = 0;
    char text[8];
    akvo_lipsync_set_deadline(service, 1000);
    akvo_lipsync_connect(service, "/nonexistent/akvo");
    akvo_lipsync_disconnect(service);
    akvo_lipsync_is_connected(service);
    akvo_lipsync_get_capabilities(service, &first, &second);
    akvo_lipsync_set_audio_delay_margin(service, 20);
    akvo_lipsync_get_audio_delay_margin(service, &first);
    akvo_lipsync_get_audio_timestamps(service, &timestamps);
    akvo_lipsync_set_video_timestamps(service, &timestamps);
    akvo_lipsync_result_text(text, sizeof(text));
    akvo_lipsync_destroy(service);
}
