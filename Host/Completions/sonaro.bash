# Completion of the sonaro command for bash. Written by make-command-documents.py.
_sonaro()
{
	local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
	if [ "$COMP_CWORD" -eq 1 ]; then
		COMPREPLY=($(compgen -W "render play waveform loudness info graph effects serve plan join --help --version --features --json" -- "$word"))
		return
	fi
	case "$command $before" in
	"render --format") COMPREPLY=($(compgen -W "wav aiff flac caf" -- "$word")); return ;;
	"render --bits") COMPREPLY=($(compgen -W "16 24 32f" -- "$word")); return ;;
	"render --dither") COMPREPLY=($(compgen -W "tpdf none" -- "$word")); return ;;
	"render --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"render --layout") COMPREPLY=($(compgen -W "mono stereo 5.1 ambisonic1" -- "$word")); return ;;
	"render --mixdown") COMPREPLY=($(compgen -W "front front-rear front-lfe all" -- "$word")); return ;;
	"render --stems") COMPREPLY=($(compgen -W "track marker" -- "$word")); return ;;
	"render --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"render --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"play --layout") COMPREPLY=($(compgen -W "mono stereo 5.1 ambisonic1" -- "$word")); return ;;
	"play --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"play --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"waveform --format") COMPREPLY=($(compgen -W "png svg json dat" -- "$word")); return ;;
	"waveform --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"waveform --theme") COMPREPLY=($(compgen -W "light dark" -- "$word")); return ;;
	"waveform --scale") COMPREPLY=($(compgen -W "linear db" -- "$word")); return ;;
	"waveform --channels") COMPREPLY=($(compgen -W "stacked merged" -- "$word")); return ;;
	"waveform --bits") COMPREPLY=($(compgen -W "8 16" -- "$word")); return ;;
	"waveform --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"waveform --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"loudness --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"loudness --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"loudness --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"info --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"graph --format") COMPREPLY=($(compgen -W "svg png dot" -- "$word")); return ;;
	"graph --layout") COMPREPLY=($(compgen -W "mono stereo 5.1 ambisonic1" -- "$word")); return ;;
	"graph --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"graph --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"graph --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"serve --cache") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"serve --bits") COMPREPLY=($(compgen -W "16 24 32f" -- "$word")); return ;;
	"serve --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"serve --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"serve --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"plan --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"plan --fades") COMPREPLY=($(compgen -W "linear equal-power s-curve" -- "$word")); return ;;
	"plan --format") COMPREPLY=($(compgen -W "wav aiff flac caf" -- "$word")); return ;;
	"plan --bits") COMPREPLY=($(compgen -W "16 24 32f" -- "$word")); return ;;
	"plan --dither") COMPREPLY=($(compgen -W "tpdf none" -- "$word")); return ;;
	"plan --stretch") COMPREPLY=($(compgen -W "scaler omega rubberband" -- "$word")); return ;;
	"plan --layout") COMPREPLY=($(compgen -W "mono stereo 5.1 ambisonic1" -- "$word")); return ;;
	"join --pieces-in") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	"join --media") compopt -o filenames; COMPREPLY=($(compgen -d -- "$word")); return ;;
	esac
	case "$word" in
	-*)
		case "$command" in
		render) COMPREPLY=($(compgen -W "-h --help -o --output --format --bits --dither --no-overwrite --block --jobs --keep-pitch --stretch --rate --resampling --gain-db --normalize --limit-dbtp --fade-in --fade-out --layout --binaural --listener --yaw --head-pitch --roll --report --strict --quiet --json --tail --at --start --duration --reverse --as-playback --speed --pitch --stream --channels --pan --mixdown --denoise --reduction --learn --effect --effect-file --set --preset --piece --range --stems --media --fades" -- "$word")) ;;
		play) COMPREPLY=($(compgen -W "-h --help --rate --layout --binaural --listener --yaw --head-pitch --roll --start --loop --speed --device --list-devices --ahead --no-ui --json --stream --media --fades --no-watch" -- "$word")) ;;
		waveform) COMPREPLY=($(compgen -W "-h --help -o --output --format --no-overwrite --keep-pitch --stretch --width --height --theme --background --wave --rms --scale --floor-db --quiet --json --start --duration --speed --pitch --samples-per-column --stream --channels --bits --media --fades" -- "$word")) ;;
		loudness) COMPREPLY=($(compgen -W "-h --help -o --output --no-overwrite --quiet --json --keep-pitch --stretch --binaural --listener --yaw --head-pitch --roll --start --duration --stream --speed --pitch --range --media --fades" -- "$word")) ;;
		info) COMPREPLY=($(compgen -W "-h --help --json --media --stream" -- "$word")) ;;
		graph) COMPREPLY=($(compgen -W "-h --help -o --output --format --no-overwrite --rate --layout --depth --track --all --keep-pitch --stretch --binaural --listener --yaw --head-pitch --roll --media --fades --quiet" -- "$word")) ;;
		effects) COMPREPLY=($(compgen -W "-h --help --class --all --json" -- "$word")) ;;
		serve) COMPREPLY=($(compgen -W "-h --help --port --bind --token --cache --bits --jobs --warm-up --media --fades --keep-pitch --stretch --binaural --listener --yaw --head-pitch --roll --quiet --json" -- "$word")) ;;
		plan) COMPREPLY=($(compgen -W "-h --help --pieces -o --output --join-output --no-overwrite --report --track-levels --range --media --fades --format --bits --dither --block --keep-pitch --stretch --rate --resampling --gain-db --normalize --limit-dbtp --fade-in --fade-out --layout --binaural --listener --yaw --head-pitch --roll --tail --strict --quiet" -- "$word")) ;;
		join) COMPREPLY=($(compgen -W "-h --help -o --output --pieces-in --media --jobs --report --no-overwrite --quiet --json" -- "$word")) ;;
		esac
		;;
	*)
		compopt -o filenames
		COMPREPLY=($(compgen -f -- "$word"))
		;;
	esac
}
complete -F _sonaro sonaro
