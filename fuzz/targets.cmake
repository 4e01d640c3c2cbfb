# One line per libFuzzer target: name, then the libraries it links.
# In the sanitizer build each line makes an executable, in the main build a test.

# --- radio protocol ---
# --- extension decoding ---
# --- vehicle ---
# --- gateway and NMEA ---
