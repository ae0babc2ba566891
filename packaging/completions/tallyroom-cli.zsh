#compdef tallyroom-cli
# Completion of tallyroom-cli for zsh.

_tallyroom_cli_commands() {
    local -a commands=(
        "usage:le contenu direct d'un dossier"
        "largest:les plus gros fichiers"
        "node-modules:les dossiers node_modules"
        "build-caches:les caches de build"
        "git-repos:les dossiers .git"
        "duplicates:les fichiers de contenu identique"
        "kinds:les types de fichiers"
        "volumes:les volumes montés"
    )
    _describe -t commands commande commands
}

_tallyroom_cli() {
    local curcontext=$curcontext state line
    local -A opt_args
    local -a help=('(-h --help)'{-h,--help}'[afficher cette aide]')
    _arguments -C $help '--version[afficher la version]' '1: :_tallyroom_cli_commands' '*:: :->command' && return
    [[ $state == command ]] || return

    local -a options=($help '--format=[forme du résultat]:forme:(table csv json)')
    [[ $line[1] == volumes ]] || options+=('--quiet[ne pas montrer la progression]' '1:dossier:_files -/'
        '*--exclude=[nom ou dossier à laisser de côté]:dossier:_files -/'
        '--one-file-system[rester sur le système de fichiers]')
    case $line[1] in
        usage) options+=('--verbose[dire combien de lecteurs chaque disque a eus]') ;;
        largest)
            options+=('--limit=[nombre de fichiers à garder]:nombre: '
                '--kind=[seulement ce type]:type:(image video audio archive code document spreadsheet data diskImage other)'
                '--older-than=[seulement les plus anciens]:âge:(1w 1m 3m 6m 1y)')
            ;;
        duplicates) options+=('--min-size=[plus petite taille considérée]:octets: ') ;;
        build-caches)
            options+=('--ecosystems=[écosystèmes cherchés]:écosystèmes:_sequence -s , compadd - javascript rust python jvm php xcode')
            ;;
    esac
    _arguments $options
}

_tallyroom_cli "$@"
