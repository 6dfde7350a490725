#!/usr/bin/env bash
# Fails if the library exports anything outside its public surface, or misses
# a symbol that applications rely on. Usage: exported-symbols.sh LIBRARY
set -euo pipefail
library=$1
# Names are compared without the C++ runtime's own namespace and ABI tags
# (std::__cxx11 and [abi:cxx11] in libstdc++, std::__1 in libc++, std::__ndk1
# in the NDK's libc++), so that one list holds for every runtime.
symbols=$(nm -D --defined-only "$library" | awk '{ $1=""; $2=""; sub(/^  /, ""); print }' | c++filt |
  sed -E 's/\[abi:[a-z0-9]+\]//g; s/std::(__cxx11|__1|__ndk1)::/std::/g')

allowed='^(velmo::kvo::lipsyncapi::Service::'\
'|velmo::kvo::sync::(Controller|Runner)::'\
'|velmo::kvo::comms::(Link|Client|TextProtocol)::'\
'|velmo::utilities::result::ErrnoTrait::'\
'|(vtable|typeinfo|typeinfo name) for velmo::kvo::(comms::(TextProtocol|Protocol<.*>)|lipsyncapi::Service.*)$'\
'|akvo_lipsync_[a-z_]+$'\
'|__android_log_[a-z_]+$'\
'|throughput_limit$'\
')'

unexpected=$(grep -Ev "$allowed" <<<"$symbols" || true)
status=0
if [ -n "$unexpected" ]; then
  echo "exported but not part of the public surface:"
  echo "$unexpected" | sed 's/^/  /'
  status=1
fi

required=(
  'velmo::kvo::lipsyncapi::Service::Service()'
  'velmo::kvo::lipsyncapi::Service::~Service()'
  'velmo::kvo::lipsyncapi::Service::connect(std::basic_string<char, std::char_traits<char>, std::allocator<char> > const&)'
  'velmo::kvo::lipsyncapi::Service::disconnect()'
  'velmo::kvo::lipsyncapi::Service::getCapabilities(unsigned long long&, unsigned long long&) const'
  'velmo::kvo::lipsyncapi::Service::setAudioDelayMargin(unsigned long long)'
  'velmo::kvo::lipsyncapi::Service::getAudioDelayMargin(unsigned long long&) const'
  'velmo::kvo::lipsyncapi::Service::getAudioTimestamps(velmo::kvo::common::LipSyncNtpTimestamps&) const'
  'velmo::kvo::lipsyncapi::Service::setVideoTimestamps(velmo::kvo::common::LipSyncNtpTimestamps const&)'
  'velmo::kvo::lipsyncapi::Service::defaultLipsyncSocketName'
  'velmo::kvo::lipsyncapi::Service::capabilityMaxAudioDelayMargin'
  'velmo::kvo::lipsyncapi::Service::capabilityGranularityMs'
  'velmo::kvo::lipsyncapi::Service::ResultTrait::toString(velmo::kvo::lipsyncapi::Service::ResultCode)'
  'velmo::kvo::comms::Link::Link(int)'
  'velmo::kvo::comms::Link::~Link()'
  'velmo::kvo::comms::Link::close()'
  'velmo::kvo::comms::Link::write(void const*, unsigned int)'
  'velmo::kvo::comms::Link::read(void*, unsigned int, unsigned int&)'
  'velmo::kvo::comms::Link::ResultTrait::toString(velmo::kvo::comms::Link::ResultCode)'
  'velmo::kvo::comms::Client::connectUnixServer(char const*, velmo::kvo::comms::Link*&)'
  'velmo::kvo::comms::Client::connectTcpServer(char const*, int, velmo::kvo::comms::Link*&)'
  'velmo::kvo::comms::Client::ResultTrait::toString(velmo::kvo::comms::Client::ResultCode)'
  'velmo::kvo::comms::TextProtocol::TextProtocol(velmo::kvo::comms::Link*)'
  'velmo::kvo::comms::TextProtocol::~TextProtocol()'
  'velmo::kvo::comms::TextProtocol::endMessageMarker'
  'typeinfo for velmo::kvo::comms::TextProtocol'
  'typeinfo for velmo::kvo::comms::Protocol<std::basic_string<char, std::char_traits<char>, std::allocator<char> > >'
  'velmo::utilities::result::ErrnoTrait::toString(int)'
  'velmo::kvo::sync::Controller::Controller(unsigned int)'
  'velmo::kvo::sync::Controller::~Controller()'
  'velmo::kvo::sync::Controller::update(velmo::kvo::sync::Poll const&)'
  'velmo::kvo::sync::Controller::marginApplied(long long, unsigned int, bool)'
  'velmo::kvo::sync::Controller::reconnected()'
  'velmo::kvo::sync::Controller::marginResponse() const'
  'velmo::kvo::sync::Runner::Runner(std::basic_string<char, std::char_traits<char>, std::allocator<char> > const&, unsigned int)'
  'velmo::kvo::sync::Runner::~Runner()'
  'velmo::kvo::sync::Runner::poll(long long, velmo::kvo::sync::VideoTimestamps const*)'
  'velmo::kvo::sync::Runner::run(std::function<bool (velmo::kvo::sync::VideoTimestamps&)> const&, std::function<bool (velmo::kvo::sync::RunnerReport const&)> const&)'
  'akvo_lipsync_create'
  'akvo_lipsync_destroy'
  'akvo_lipsync_set_deadline'
  'akvo_lipsync_connect'
  'akvo_lipsync_disconnect'
  'akvo_lipsync_get_capabilities'
  'akvo_lipsync_set_audio_delay_margin'
  'akvo_lipsync_get_audio_delay_margin'
  'akvo_lipsync_get_audio_timestamps'
  'akvo_lipsync_set_video_timestamps'
  'akvo_lipsync_is_connected'
  'akvo_lipsync_result_text'
  'akvo_lipsync_sync_controller_create'
  'akvo_lipsync_sync_controller_destroy'
  'akvo_lipsync_sync_controller_update'
  'akvo_lipsync_sync_controller_margin_applied'
  'akvo_lipsync_sync_controller_reconnected'
  'akvo_lipsync_sync_controller_margin_response'
  'akvo_lipsync_sync_runner_create'
  'akvo_lipsync_sync_runner_create_over'
  'akvo_lipsync_sync_runner_destroy'
  'akvo_lipsync_sync_runner_poll'
  'akvo_lipsync_sync_runner_run'
  'akvo_lipsync_sync_runner_last_failure'
  'akvo_lipsync_sync_runner_margin_response'
  '__android_log_write'
  '__android_log_buf_write'
  '__android_log_print'
  '__android_log_vprint'
  '__android_log_buf_print'
  '__android_log_assert'
  '__android_log_bwrite'
  '__android_log_btwrite'
  '__android_log_bswrite'
  '__android_log_dev_available'
  'throughput_limit'
)
for symbol in "${required[@]}"; do
  if ! grep -Fxq "$symbol" <<<"$symbols"; then
    echo "missing: $symbol"
    status=1
  fi
done
[ $status -eq 0 ] && echo "exported symbols: $(wc -l <<<"$symbols") symbols, all public, none missing"
exit $status
