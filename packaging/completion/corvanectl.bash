# Completion of corvanectl for bash.

# Words of which one is expected, given what stands before it.
_corvanectl_words()
{
    local command=$1 subcommand=$2 position=$3
    case "$command:$subcommand:$position" in
        ::*)
            printf '%s\n' ping receiver channels tracking sbas glonass-corrections gps-logging \
                sbas-prn reference-format ionosphere reference-position bandwidth region refresh \
                reset nmea firmware config record methods call
            ;;
        sbas::0 | glonass-corrections::0 | gps-logging::0) printf '%s\n' on off ;;
        reference-format::0) printf '%s\n' VARN1 CMR RTCM3 RTCM2 ;;
        ionosphere::0) printf '%s\n' auto klobuchar grid ;;
        reference-position::0) printf '%s\n' show set clear ;;
        region::0) printf '%s\n' refresh ;;
        reset::0) printf '%s\n' rtk pdp factory ;;
        nmea::0) printf '%s\n' GPGGA GPGLL GPGRS GPGSA GPGST GPGSV GPRMC GPVTG GPZDA ;;
        nmea::1) printf '%s\n' 1Hz 5Hz 10Hz once off ;;
        firmware::0) printf '%s\n' upgrade status ;;
        record::0) printf '%s\n' info convert ;;
        config::0) printf '%s\n' get set unset list ;;
        config:get:1 | config:set:1 | config:unset:1)
            # The section that the command line names, else the one that is meant then.
            "$_corvanectl_program" config --section "${_corvanectl_section:-Corvane}" list --all \
                2>/dev/null | sed -n 's/^\([^[ =][^ =]*\) = .*/\1/p'
            ;;
        call::0)
            "$_corvanectl_program" methods 2>/dev/null | sed -n 's/^\([A-Za-z_]*\)(.*/\1/p'
            ;;
    esac
}

_corvanectl_options()
{
    printf '%s\n' --host --port --timeout --json --help
    case "$1:$2" in
        :) printf '%s\n' --version ;;
        tracking:*) printf '%s\n' --watch ;;
        reference-position:set) printf '%s\n' --geodetic ;;
        reset:*) printf '%s\n' --yes ;;
        firmware:upgrade) printf '%s\n' --no-wait --restart ;;
        record:convert) printf '%s\n' --force ;;
        config:set) printf '%s\n' --section --file --force ;;
        config:list) printf '%s\n' --section --file --all ;;
        config:*) printf '%s\n' --section --file ;;
    esac
}

_corvanectl()
{
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local _corvanectl_program=${COMP_WORDS[0]} _corvanectl_section=
    local command='' subcommand='' position=0 i word
    COMPREPLY=()

    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case $word in
            --section)
                _corvanectl_section=${COMP_WORDS[++i]}
                ;;
            --host | --port | --timeout | --file)
                ((++i))
                ;;
            -*) ;;
            *)
                if [[ -z $command ]]; then
                    command=$word
                else
                    if ((position == 0)) &&
                        [[ $command =~ ^(reference-position|region|firmware|config|record)$ ]]; then
                        subcommand=$word
                    fi
                    ((++position))
                fi
                ;;
        esac
    done

    case $previous in
        --host)
            mapfile -t COMPREPLY < <(compgen -A hostname -- "$cur")
            return
            ;;
        --port | --timeout) return ;;
        --file)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$cur")
            return
            ;;
        --section)
            mapfile -t COMPREPLY < <(compgen -W 'Corvane glide localisation platform' -- "$cur")
            return
            ;;
    esac

    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(
            compgen -W "$(_corvanectl_options "$command" "$subcommand")" -- "$cur"
        )
    elif [[ $command:$subcommand:$position =~ ^(firmware:upgrade:1|record:info:1|record:convert:[12])$ ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    else
        mapfile -t COMPREPLY < <(
            compgen -W "$(_corvanectl_words "$command" "$subcommand" "$position")" -- "$cur"
        )
    fi
}

complete -F _corvanectl corvanectl
