# One line per libFuzzer target: name, then the libraries it links.
# In the sanitizer build each line makes an executable, in the main build a test.

# --- radio protocol ---
varda_fuzz_target(fuzz_spp varda)
varda_fuzz_target(fuzz_pp varda_wire)
varda_fuzz_target(fuzz_ext_codec varda_wire)
varda_fuzz_target(fuzz_callsign varda_wire)
# --- extension decoding ---
varda_fuzz_target(fuzz_extension_decode varda)
# --- vehicle ---
varda_fuzz_target(fuzz_glider_payload glider_common)
varda_fuzz_target(fuzz_vehicle_commands vehicle_wire Qt5::Core)
# --- vehicle station files ---
if(PROJECT_NAME STREQUAL "VardaFuzz" AND NOT TARGET glider_station)
  add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/../tools/glider-station glider-station EXCLUDE_FROM_ALL)
endif()
varda_fuzz_target(fuzz_station_files glider_station)
# --- gateway and NMEA ---
varda_fuzz_target(fuzz_nmea vehicle_wire)
varda_fuzz_target(fuzz_iridium_framing gateway_client)
# --- simulator ---
if(PROJECT_NAME STREQUAL "VardaFuzz" AND NOT TARGET varda_sim_core)
  add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/../tools/varda-sim varda-sim EXCLUDE_FROM_ALL)
endif()
varda_fuzz_target(fuzz_sim_gateway varda_sim_core)
varda_fuzz_target(fuzz_sim_vehicle varda_sim_core)
varda_fuzz_target(fuzz_sim_modem varda_sim_core)
# --- main window ---
varda_fuzz_target(fuzz_mainwindow_dispatch toolbox)
varda_fuzz_target(fuzz_link_address links)
# --- session captures ---
varda_fuzz_target(fuzz_capture_reader capture_wire)
varda_fuzz_target(fuzz_stream_segmenter capture_wire)
