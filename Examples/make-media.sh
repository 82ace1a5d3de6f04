#!/bin/sh
# Makes the example media: speech, music and effects, mono and stereo, at 44.1 and 48 kHz. Everything is
# synthesized, and the same every time with the same versions of the programs.
#
#   Examples/make-media.sh [FOLDER]      (default: Examples/Media beside this script)
#
# Needs espeak-ng and sox with FLAC.
set -eu

target=${1:-$(dirname "$0")/Media}
mkdir -p "$target"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# -R: random generators start the same way each time. -D: no dither where nothing is lost that matters.
sound() { sox -R -D "$@"; }

# speak NAME VOICE PITCH WORDS_PER_MINUTE TEXT: a line of dialogue, mono, 48 kHz.
speak() {
	espeak-ng -v "$2" -p "$3" -s "$4" -w "$work/speech.wav" "$5"
	sound "$work/speech.wav" --comment '' -b 16 "$target/$1.flac" \
		rate -h 48000 highpass 70 silence 1 0.01 0.1% reverse silence 1 0.01 0.1% reverse \
		pad 0.1 0.2 norm -6
}

speak dialogue en-gb+f3 55 150 "Good evening. The last boat leaves at nine, and nobody has seen the captain."
speak dialogue-reply en-us+m3 35 145 "Then we row. I know the harbour better than my own kitchen."

# chord NUMBER BASS LOW MIDDLE HIGH: two beats, plucked one string after the other, stereo.
chord() {
	sound -r 44100 -n "$work/left.wav" synth 1.2 pluck "$2" synth 1.2 pluck mix "$3" remix -
	sound -r 44100 -n "$work/right.wav" synth 1.2 pluck "$4" synth 1.2 pluck mix "$5" remix - \
		pad 0.15 trim 0 1.2
	sound -M "$work/left.wav" "$work/right.wav" "$work/chord$1.wav" \
		remix 1v0.8,2v0.25 1v0.25,2v0.8 lowpass 5000 fade t 0.002 1.2 0.15
}

# Music, stereo, 44.1 kHz: four chords, twice around.
chord 1 A2 A3 C4 E4
chord 2 F2 F3 A3 C4
chord 3 C3 G3 C4 E4
chord 4 G2 G3 B3 D4
sound "$work/chord1.wav" "$work/chord2.wav" "$work/chord3.wav" "$work/chord4.wav" \
	"$work/chord1.wav" "$work/chord2.wav" "$work/chord3.wav" "$work/chord1.wav" \
	--comment '' -b 16 "$target/music.flac" fade t 0 0 0.8 norm -9

# Effects: wind over the harbour, stereo, 48 kHz ...
sound -r 48000 -n -c 2 --comment '' -b 16 "$target/effect-wind.flac" \
	synth 4 brownnoise brownnoise bandpass 400 1.5o tremolo 0.4 70 lowpass 900 fade t 0.8 4 1 norm -18
# ... and a ship's bell, mono, 44.1 kHz: partials that are no harmonics, the high ones gone sooner.
bell=
for partial in "523 2.4 0.5" "1255 1.8 0.3" "1412 1.4 0.2" "2301 0.9 0.15" "3190 0.5 0.1"; do
	set -- $partial
	sound -r 44100 -n "$work/bell$1.wav" synth 2.4 sine "$1" fade l 0.001 "$2" "$2" vol "$3"
	bell="$bell $work/bell$1.wav"
done
# The names hold no blanks but those between them.
# shellcheck disable=SC2086
sound -m $bell --comment '' -b 16 "$target/effect-bell.flac" norm -9

ls -l "$target"
