/* Compiled as C99 with -pedantic-errors: the header is plain C, and every
   function links from C. No engine listens at the path. */
#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

int akvo_test_call_every_function(void);

/* The number of calls that did not end as expected. */
int akvo_test_call_every_function(void)
{
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t first = 0;
    uint64_t second = 0;
    char text[8];
    int unexpected = service == NULL;
    unexpected += akvo_lipsync_set_deadline(service, 1000) != AKVO_LIPSYNC_SUCCESS;
    unexpected += akvo_lipsync_connect(service, "/nonexistent/akvo") != AKVO_LIPSYNC_CANNOT_CONNECT;
    unexpected += akvo_lipsync_disconnect(service) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_is_connected(service) != 0;
    unexpected += akvo_lipsync_get_capabilities(service, &first, &second) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_set_audio_delay_margin(service, 20) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_get_audio_delay_margin(service, &first) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_get_audio_timestamps(service, &timestamps) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_set_video_timestamps(service, &timestamps) != AKVO_LIPSYNC_BAD_STATE;
    unexpected += akvo_lipsync_result_text(text, sizeof(text)) != 53;
    akvo_lipsync_destroy(service);
    return unexpected;
}
