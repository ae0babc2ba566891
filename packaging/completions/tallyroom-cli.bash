# shellcheck shell=bash
# Completion of tallyroom-cli for bash.

_tallyroom_cli_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_tallyroom_cli_folders() {
    compopt -o filenames 2>/dev/null # fails only outside of a completion
    mapfile -t COMPREPLY < <(compgen -d -- "$1")
}

# A list such as "rust,jvm": names not in it yet, after what is typed already.
_tallyroom_cli_ecosystems() {
    local typed=$1 list="" name
    local -a left=()
    [[ $typed != *,* ]] || list=${typed%,*},
    for name in javascript rust python jvm php xcode; do
        [[ ,$list == *,$name,* ]] || left+=("$list$name")
    done
    compopt -o nospace 2>/dev/null
    _tallyroom_cli_words "${left[*]}" "$typed"
}

# The options that a command takes.
_tallyroom_cli_options() {
    local options="--format -h --help"
    [[ $1 == volumes ]] || options+=" --quiet --exclude --one-file-system"
    case $1 in
        usage) options+=" --verbose" ;;
        largest) options+=" --limit --kind --older-than" ;;
        build-caches) options+=" --ecosystems" ;;
        duplicates) options+=" --min-size" ;;
        "") options="-h --help --version" ;;
    esac
    echo "$options"
}

_tallyroom_cli() {
    local commands="usage largest node-modules build-caches git-repos duplicates kinds volumes"
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command="" word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ -z $command && " $commands " == *" $word "* ]]; then
            command=$word
        fi
    done
    # bash takes the = of --format=csv for a word of its own.
    if [[ $current == = ]]; then
        current=""
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    case $previous in
        --format) _tallyroom_cli_words "table csv json" "$current" ;;
        --ecosystems) _tallyroom_cli_ecosystems "$current" ;;
        --exclude) _tallyroom_cli_folders "$current" ;;
        --kind) _tallyroom_cli_words "image video audio archive code document spreadsheet data diskImage other" "$current" ;;
        --older-than) _tallyroom_cli_words "1w 1m 3m 6m 1y" "$current" ;;
        --limit | --min-size) ;; # a number
        *)
            if [[ $current == -* ]]; then
                _tallyroom_cli_words "$(_tallyroom_cli_options "$command")" "$current"
            elif [[ -z $command ]]; then
                _tallyroom_cli_words "$commands" "$current"
            elif [[ $command != volumes ]]; then
                _tallyroom_cli_folders "$current"
            fi
            ;;
    esac
}

complete -F _tallyroom_cli tallyroom-cli
