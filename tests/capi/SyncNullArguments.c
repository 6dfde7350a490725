/* Compiled as C99 with -pedantic-errors: the sync header is plain C, and
   every sync function links and refuses NULL arguments from C. */
#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"

int akvo_test_sync_null_arguments(void);

/* How many calls refused: each call here has a NULL argument. */
int akvo_test_sync_null_arguments(void)
{
    akvo_lipsync_sync_controller* controller = akvo_lipsync_sync_controller_create(200);
    akvo_lipsync_sync_poll poll = {0, 0, {0, 0, 0, 0}, 0, {0, 0}};
    akvo_lipsync_sync_decision decision;
    akvo_lipsync_sync_margin_response response;
    akvo_lipsync_sync_report report;
    akvo_lipsync_sync_calls calls = {NULL, NULL, NULL, NULL, NULL, NULL};
    char text[8];
    int refused = akvo_lipsync_sync_runner_create(NULL, NULL, 200) == NULL;
    refused += akvo_lipsync_sync_runner_create_over(&calls, 200) == NULL;
    refused += akvo_lipsync_sync_controller_update(NULL, &poll, &decision) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_controller_update(controller, NULL, &decision) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_controller_update(controller, &poll, NULL) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_controller_margin_applied(NULL, 0, 20, 1) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_controller_reconnected(NULL) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_controller_margin_response(controller, NULL) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_runner_poll(NULL, 0, NULL, &report) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_runner_run(NULL, NULL, NULL, NULL) == AKVO_LIPSYNC_INVALID_PARAM;
    refused += akvo_lipsync_sync_runner_last_failure(NULL, text, sizeof(text)) == 0 && text[0] == '\0';
    refused += akvo_lipsync_sync_runner_margin_response(NULL, &response) == AKVO_LIPSYNC_INVALID_PARAM;
    akvo_lipsync_sync_controller_destroy(controller);
    akvo_lipsync_sync_runner_destroy(NULL);
    return refused;
}
