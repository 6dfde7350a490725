/* The C interface against the engine simulator, run as a child process on a
 * socket in a fresh temporary folder: every operation and code, a hang cut by
 * the deadline, and threads sharing one handle or several. */
#define _POSIX_C_SOURCE 200809L

#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static int failures;

static void check(int ok, const char* what, int line)
{
    if (!ok) {
        fprintf(stderr, "ServiceCInterfaceTest.c:%d: check failed: %s\n", line, what);
        ++failures;
    }
}

#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static void expect(int32_t code, int32_t expected_code, const char* expected_text, int line)
{
    char text[1024];
    const size_t length = akvo_lipsync_result_text(text, sizeof(text));
    if (code != expected_code || length >= sizeof(text) || strcmp(text, expected_text) != 0) {
        fprintf(stderr, "ServiceCInterfaceTest.c:%d: expected %d \"%s\"\n  got %d \"%s\"\n", line,
                (int)expected_code, expected_text, (int)code, text);
        ++failures;
    }
}

#define EXPECT(call, code, text) expect((call), (code), (text), __LINE__)

static const char not_connected[] = "Bad state (Code 1003): Not connected to the audio KVO";
static const akvo_lipsync_timestamps fixed_timestamps = {16045690984833536ULL, 16045690985263104ULL,
                                                         16045690984404992ULL, 40};

static int same_timestamps(const akvo_lipsync_timestamps* a, const akvo_lipsync_timestamps* b)
{
    return a->capture == b->capture && a->rendering == b->rendering && a->receiving == b->receiving &&
           a->jitter_buffer_depth == b->jitter_buffer_depth;
}

static void pause_ms(long milliseconds)
{
    struct timespec pause = {milliseconds / 1000, (milliseconds % 1000) * 1000000L};
    nanosleep(&pause, NULL);
}

typedef struct simulator
{
    pid_t pid;
    char folder[32];
    char socket_path[64];
    char output_path[64];
    char log_path[64];
} simulator;

/* Whether the file holds `text`, waiting up to 10 s for it to appear. */
static int file_shows(const char* path, const char* text)
{
    char content[8192];
    int waited;
    for (waited = 0; waited < 10000; waited += 5) {
        FILE* file = fopen(path, "r");
        size_t length = 0;
        if (file != NULL) {
            length = fread(content, 1, sizeof(content) - 1, file);
            fclose(file);
        }
        content[length] = '\0';
        if (strstr(content, text) != NULL) {
            return 1;
        }
        pause_ms(5);
    }
    fprintf(stderr, "%s never showed \"%s\"; it holds \"%s\"\n", path, text, content);
    return 0;
}

/* `arguments`: the simulator's options after --socket, NULL-terminated. */
static void simulator_start(simulator* sim, const char* const* arguments)
{
    const char* argv[16] = {AKVO_SIM_PATH, "--socket", NULL};
    char listening[128];
    int count = 0;
    strcpy(sim->folder, "/tmp/akvo-capi-XXXXXX");
    if (mkdtemp(sim->folder) == NULL) {
        perror("mkdtemp");
        exit(1);
    }
    snprintf(sim->socket_path, sizeof(sim->socket_path), "%s/lipsync.sock", sim->folder);
    snprintf(sim->output_path, sizeof(sim->output_path), "%s/output", sim->folder);
    snprintf(sim->log_path, sizeof(sim->log_path), "%s/log", sim->folder);
    argv[2] = sim->socket_path;
    while (arguments[count] != NULL && count < 12) {
        argv[3 + count] = arguments[count];
        ++count;
    }
    argv[3 + count] = NULL;
    sim->pid = fork();
    if (sim->pid == 0) {
        /* Should the test die halfway, the simulator goes with it. */
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        const int output = open(sim->output_path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int log = open(sim->log_path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(output, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        execv(argv[0], (char* const*)argv);
        _exit(127);
    }
    snprintf(listening, sizeof(listening), "akvo-lipsync-sim: listening on %s\n", sim->socket_path);
    if (!file_shows(sim->output_path, listening)) {
        kill(sim->pid, SIGKILL);
        exit(1);
    }
}

static void simulator_stop(simulator* sim)
{
    int status = 0;
    kill(sim->pid, SIGTERM);
    waitpid(sim->pid, &status, 0);
    unlink(sim->socket_path);
    unlink(sim->output_path);
    unlink(sim->log_path);
    rmdir(sim->folder);
}

static void test_every_operation(void)
{
    static const char* const arguments[] = {"--fixed", NULL};
    simulator sim;
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {1, 2, 3, 4};
    const akvo_lipsync_timestamps untouched = timestamps;
    uint64_t granularity = 0;
    uint64_t maximum = 0;
    uint64_t margin = 7;
    char missing[80];
    char refused[256];

    simulator_start(&sim, arguments);
    snprintf(missing, sizeof(missing), "%s/missing.sock", sim.folder);
    CHECK(service != NULL);

    EXPECT(akvo_lipsync_get_capabilities(service, &granularity, &maximum), AKVO_LIPSYNC_BAD_STATE,
           not_connected);
    EXPECT(akvo_lipsync_set_audio_delay_margin(service, 40), AKVO_LIPSYNC_BAD_STATE, not_connected);
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, &margin), AKVO_LIPSYNC_BAD_STATE, not_connected);
    EXPECT(akvo_lipsync_get_audio_timestamps(service, &timestamps), AKVO_LIPSYNC_BAD_STATE, not_connected);
    EXPECT(akvo_lipsync_set_video_timestamps(service, &timestamps), AKVO_LIPSYNC_BAD_STATE, not_connected);
    EXPECT(akvo_lipsync_disconnect(service), AKVO_LIPSYNC_BAD_STATE, not_connected);
    CHECK(granularity == 0 && maximum == 0 && margin == 7 && same_timestamps(&timestamps, &untouched));

    snprintf(
        refused, sizeof(refused),
        "Cannot connect to Audio KVO (Code 1004): {Connection has failed (Code 20002): Unable to connect "
        "to %s {No such file or directory (Code 2)}}",
        missing);
    EXPECT(akvo_lipsync_connect(service, missing), AKVO_LIPSYNC_CANNOT_CONNECT, refused);
    EXPECT(akvo_lipsync_connect(service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(akvo_lipsync_connect(service, sim.socket_path) == AKVO_LIPSYNC_BAD_STATE);

    EXPECT(akvo_lipsync_get_capabilities(service, &granularity, &maximum), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(granularity == 20 && maximum == 100);
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, &margin), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(margin == 0);
    EXPECT(akvo_lipsync_set_audio_delay_margin(service, 150), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002):  audio delay margin 150 is not in range [0..100]");
    CHECK(akvo_lipsync_set_audio_delay_margin(service, 30) == AKVO_LIPSYNC_INVALID_PARAM);
    EXPECT(akvo_lipsync_set_audio_delay_margin(service, 40), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, &margin), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(margin == 40);
    EXPECT(akvo_lipsync_get_audio_timestamps(service, &timestamps), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(same_timestamps(&timestamps, &fixed_timestamps));
    EXPECT(akvo_lipsync_set_video_timestamps(service, &timestamps), AKVO_LIPSYNC_SUCCESS, "Success");

    EXPECT(akvo_lipsync_disconnect(service), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_disconnect(service), AKVO_LIPSYNC_BAD_STATE, not_connected);
    akvo_lipsync_destroy(service);
    akvo_lipsync_destroy(NULL);
    simulator_stop(&sim);
}

static void test_null_pointers_and_text_buffers(void)
{
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t value = 0;
    char small[4] = "xyz";

    EXPECT(akvo_lipsync_connect(NULL, NULL), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): service is NULL");
    EXPECT(akvo_lipsync_set_deadline(NULL, 10), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): service is NULL");
    EXPECT(akvo_lipsync_get_capabilities(service, NULL, &value), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): granularity_ms is NULL");
    EXPECT(akvo_lipsync_get_capabilities(service, &value, NULL), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): max_audio_delay_margin_ms is NULL");
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, NULL), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): delay_ms is NULL");
    EXPECT(akvo_lipsync_get_audio_timestamps(service, NULL), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): timestamps is NULL");
    EXPECT(akvo_lipsync_set_video_timestamps(service, NULL), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): timestamps is NULL");
    EXPECT(akvo_lipsync_get_audio_timestamps(NULL, &timestamps), AKVO_LIPSYNC_INVALID_PARAM,
           "Invalid Param (Code 1002): service is NULL");

    /* The default socket is not there on a test machine. */
    CHECK(akvo_lipsync_connect(service, NULL) == AKVO_LIPSYNC_CANNOT_CONNECT);
    EXPECT(akvo_lipsync_set_deadline(service, 10), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(akvo_lipsync_result_text(small, sizeof(small)) == 7 && strcmp(small, "Suc") == 0);
    CHECK(akvo_lipsync_result_text(small, 0) == 7 && strcmp(small, "Suc") == 0);
    CHECK(akvo_lipsync_result_text(NULL, 0) == 7);
    akvo_lipsync_destroy(service);
}

typedef struct server_failure
{
    const char* arguments[4];
    int32_t code;
    const char* text;
} server_failure;

static void test_server_failures(void)
{
    static const server_failure cases[] = {
        {{"--idle", NULL},
         AKVO_LIPSYNC_NOT_IN_CALL,
         "The AKVO is not performing a call (Code 1007): {Bad state (Code 1003): The engine is not in a "
         "call}"},
        {{"--fault", "1:error:1002:refused", NULL},
         AKVO_LIPSYNC_SERVER_ERROR,
         "The lipsync server returned an error (Code 1006): {Invalid parameter (Code 1002): refused}"},
        {{"--fault", "1:close", NULL},
         AKVO_LIPSYNC_TRANSPORT_ERROR,
         "An error has occured in the transport layer (Code 1005): {Connection closed by distant (Code "
         "5905): "
         "{Protocol has been closed by distant (Code 40005): {Closed by distant (Code 10003)}}}"},
        {{"--fault", "1:garbage", NULL},
         AKVO_LIPSYNC_TRANSPORT_ERROR,
         "An error has occured in the transport layer (Code 1005): {Serializer error (Code 5903): "
         "{Conversion failed "
         "(Code 71): No 'AKVO' root element found in xml data.}}"},
    };
    size_t i;
    for (i = 0; i < sizeof(cases) / sizeof(cases[0]); ++i) {
        simulator sim;
        akvo_lipsync_service* service = akvo_lipsync_create();
        akvo_lipsync_timestamps timestamps = {1, 2, 3, 4};
        const akvo_lipsync_timestamps untouched = timestamps;
        simulator_start(&sim, cases[i].arguments);
        EXPECT(akvo_lipsync_connect(service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
        EXPECT(akvo_lipsync_get_audio_timestamps(service, &timestamps), cases[i].code, cases[i].text);
        CHECK(same_timestamps(&timestamps, &untouched));
        akvo_lipsync_destroy(service);
        simulator_stop(&sim);
    }
}

static void test_hang_cut_by_the_deadline(void)
{
    static const char* const arguments[] = {"--fixed", "--fault",      "2:delay:5000",
                                            "--fault", "4:delay:5000", NULL};
    simulator sim;
    akvo_lipsync_service* service = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {1, 2, 3, 4};
    const akvo_lipsync_timestamps untouched = timestamps;
    uint64_t margin = 0;

    simulator_start(&sim, arguments);
    EXPECT(akvo_lipsync_set_deadline(service, 200), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_connect(service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    /* Request 1 is answered in time, with a deadline armed all the same. */
    EXPECT(akvo_lipsync_set_audio_delay_margin(service, 40), AKVO_LIPSYNC_SUCCESS, "Success");

    EXPECT(
        akvo_lipsync_get_audio_timestamps(service, &timestamps), AKVO_LIPSYNC_DEADLINE_EXCEEDED,
        "Deadline exceeded (Code 1100): No answer within 200 ms, disconnected {An error has occured in the "
        "transport layer (Code 1005): {Connection closed (Code 5904): {Protocol is closed. (Code 40004): "
        "{Closed (Code 10002)}}}}");
    CHECK(same_timestamps(&timestamps, &untouched));
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, &margin), AKVO_LIPSYNC_BAD_STATE, not_connected);

    EXPECT(akvo_lipsync_connect(service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_get_audio_timestamps(service, &timestamps), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(same_timestamps(&timestamps, &fixed_timestamps));

    /* A margin whose answer came too late is not taken as accepted. */
    EXPECT(
        akvo_lipsync_set_audio_delay_margin(service, 60), AKVO_LIPSYNC_DEADLINE_EXCEEDED,
        "Deadline exceeded (Code 1100): No answer within 200 ms, disconnected {An error has occured in the "
        "transport layer (Code 1005): {Connection closed (Code 5904): {Protocol is closed. (Code 40004): "
        "{Closed (Code 10002)}}}}");
    EXPECT(akvo_lipsync_connect(service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_get_audio_delay_margin(service, &margin), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(margin == 40);

    EXPECT(akvo_lipsync_set_deadline(service, 0), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_get_audio_timestamps(service, &timestamps), AKVO_LIPSYNC_SUCCESS, "Success");
    akvo_lipsync_destroy(service);
    simulator_stop(&sim);
}

typedef struct timestamps_call
{
    akvo_lipsync_service* service;
    int32_t code;
} timestamps_call;

static void* call_for_timestamps(void* argument)
{
    timestamps_call* call = argument;
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    call->code = akvo_lipsync_get_audio_timestamps(call->service, &timestamps);
    return NULL;
}

/* While one call waits for a slow engine without a deadline, calls under a
   deadline that would need its turn give up and touch nothing. */
static void test_deadline_while_waiting_for_the_turn(void)
{
    static const char* const arguments[] = {"--verbose", "--fault", "1:delay:1000", NULL};
    static const char waited[] =
        "Deadline exceeded (Code 1100): Still waiting for another call after 100 ms, nothing done";
    simulator sim;
    timestamps_call slow;
    akvo_lipsync_service* other = akvo_lipsync_create();
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    uint64_t granularity = 0;
    uint64_t maximum = 0;
    pthread_t thread;
    char request_seen[64];

    simulator_start(&sim, arguments);
    slow.service = akvo_lipsync_create();
    EXPECT(akvo_lipsync_connect(slow.service, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_connect(other, sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_set_deadline(other, 100), AKVO_LIPSYNC_SUCCESS, "Success");
    CHECK(pthread_create(&thread, NULL, call_for_timestamps, &slow) == 0);
    snprintf(request_seen, sizeof(request_seen), "request 1: GetAudioTs_Request");
    CHECK(file_shows(sim.log_path, request_seen));

    EXPECT(akvo_lipsync_get_audio_timestamps(other, &timestamps), AKVO_LIPSYNC_DEADLINE_EXCEEDED, waited);
    EXPECT(akvo_lipsync_set_deadline(slow.service, 100), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_get_capabilities(slow.service, &granularity, &maximum),
           AKVO_LIPSYNC_DEADLINE_EXCEEDED, waited);
    CHECK(granularity == 0 && maximum == 0);

    CHECK(pthread_join(thread, NULL) == 0);
    CHECK(slow.code == AKVO_LIPSYNC_SUCCESS);
    EXPECT(akvo_lipsync_get_audio_timestamps(other, &timestamps), AKVO_LIPSYNC_SUCCESS, "Success");
    akvo_lipsync_destroy(slow.service);
    akvo_lipsync_destroy(other);
    simulator_stop(&sim);
}

enum
{
    calls_per_thread = 40
};

typedef struct worker
{
    akvo_lipsync_service* service;
    int index;
    int failures;
} worker;

/* Each thread reads its own result text, whatever the others do meanwhile. */
static void* work(void* argument)
{
    worker* self = argument;
    int i;
    for (i = 0; i < calls_per_thread; ++i) {
        akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
        uint64_t margin = 0;
        char text[64];
        const uint64_t wanted = (uint64_t)(20 * ((self->index + i) % 6));
        const uint64_t refused = (uint64_t)(10 + 20 * ((self->index + i) % 5));
        if (akvo_lipsync_get_audio_timestamps(self->service, &timestamps) != AKVO_LIPSYNC_SUCCESS ||
            !same_timestamps(&timestamps, &fixed_timestamps)) {
            ++self->failures;
        }
        if (akvo_lipsync_set_audio_delay_margin(self->service, wanted) != AKVO_LIPSYNC_SUCCESS ||
            akvo_lipsync_get_audio_delay_margin(self->service, &margin) != AKVO_LIPSYNC_SUCCESS ||
            margin > 100) {
            ++self->failures;
        }
        if (akvo_lipsync_set_audio_delay_margin(self->service, refused) != AKVO_LIPSYNC_INVALID_PARAM ||
            akvo_lipsync_result_text(text, sizeof(text)) != 85) {
            ++self->failures;
        }
    }
    return NULL;
}

static void run_workers(akvo_lipsync_service** services, int service_count, int thread_count)
{
    pthread_t threads[8];
    worker workers[8];
    int i;
    for (i = 0; i < thread_count; ++i) {
        workers[i].service = services[i % service_count];
        workers[i].index = i;
        workers[i].failures = 0;
        CHECK(pthread_create(&threads[i], NULL, work, &workers[i]) == 0);
    }
    for (i = 0; i < thread_count; ++i) {
        CHECK(pthread_join(threads[i], NULL) == 0);
        CHECK(workers[i].failures == 0);
    }
}

static void test_threads(void)
{
    static const char* const arguments[] = {"--fixed", NULL};
    simulator sim;
    akvo_lipsync_service* services[4];
    int i;
    simulator_start(&sim, arguments);
    for (i = 0; i < 4; ++i) {
        services[i] = akvo_lipsync_create();
        EXPECT(akvo_lipsync_connect(services[i], sim.socket_path), AKVO_LIPSYNC_SUCCESS, "Success");
    }
    /* Half of them watched by a deadline that is never reached. */
    EXPECT(akvo_lipsync_set_deadline(services[1], 60000), AKVO_LIPSYNC_SUCCESS, "Success");
    EXPECT(akvo_lipsync_set_deadline(services[3], 60000), AKVO_LIPSYNC_SUCCESS, "Success");

    run_workers(services, 1, 8);
    run_workers(services + 1, 1, 8);
    run_workers(services, 4, 8);

    for (i = 0; i < 4; ++i) {
        akvo_lipsync_destroy(services[i]);
    }
    simulator_stop(&sim);
}

int main(void)
{
    test_every_operation();
    test_null_pointers_and_text_buffers();
    test_server_failures();
    test_hang_cut_by_the_deadline();
    test_deadline_while_waiting_for_the_turn();
    test_threads();
    if (failures != 0) {
        fprintf(stderr, "%d checks failed\n", failures);
        return 1;
    }
    fprintf(stderr, "all checks passed\n");
    return 0;
}
