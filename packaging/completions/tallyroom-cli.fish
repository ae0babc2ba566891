# Completion of tallyroom-cli for fish.

set -l commands usage largest node-modules build-caches git-repos duplicates kinds volumes
set -l given "__fish_seen_subcommand_from $commands"

# A list such as "rust,jvm": names not in it yet, after what is typed already.
function __tallyroom_cli_ecosystems
    set -l list (commandline -ct | string replace -r '^--ecosystems=' '' | string match -r '.*,')
    for name in javascript rust python jvm php xcode
        string match -q "*,$name,*" ",$list"; or echo "$list$name"
    end
end

complete -c tallyroom-cli -f
complete -c tallyroom-cli -n "not $given" -l version -d "Afficher la version"
complete -c tallyroom-cli -s h -l help -d "Afficher cette aide"

complete -c tallyroom-cli -n "not $given" -a usage -d "Le contenu direct d'un dossier"
complete -c tallyroom-cli -n "not $given" -a largest -d "Les plus gros fichiers"
complete -c tallyroom-cli -n "not $given" -a node-modules -d "Les dossiers node_modules"
complete -c tallyroom-cli -n "not $given" -a build-caches -d "Les caches de build"
complete -c tallyroom-cli -n "not $given" -a git-repos -d "Les dossiers .git"
complete -c tallyroom-cli -n "not $given" -a duplicates -d "Les fichiers de contenu identique"
complete -c tallyroom-cli -n "not $given" -a kinds -d "Les types de fichiers"
complete -c tallyroom-cli -n "not $given" -a volumes -d "Les volumes montés"

complete -c tallyroom-cli -n "$given" -l format -x -a "table csv json" -d "Forme du résultat"
complete -c tallyroom-cli -n "$given; and not __fish_seen_subcommand_from volumes" -l quiet \
    -d "Ne pas montrer la progression"
complete -c tallyroom-cli -n "$given; and not __fish_seen_subcommand_from volumes" -l exclude -x \
    -a "(__fish_complete_directories (commandline -ct))" -d "Dossier, ou nom de dossiers, à laisser de côté"
complete -c tallyroom-cli -n "$given; and not __fish_seen_subcommand_from volumes" -l one-file-system \
    -d "Rester sur le système de fichiers"
complete -c tallyroom-cli -n "$given; and not __fish_seen_subcommand_from volumes" \
    -a "(__fish_complete_directories (commandline -ct))"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from usage" -l verbose \
    -d "Dire combien de lecteurs chaque disque a eus"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from largest" -l limit -x -d "Nombre de fichiers à garder"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from largest" -l kind -x \
    -a "image video audio archive code document spreadsheet data diskImage other" -d "Seulement ce type"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from largest" -l older-than -x \
    -a "1w 1m 3m 6m 1y" -d "Seulement les plus anciens"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from duplicates" -l min-size -x \
    -d "Plus petite taille considérée, en octets"
complete -c tallyroom-cli -n "__fish_seen_subcommand_from build-caches" -l ecosystems -x \
    -a "(__tallyroom_cli_ecosystems)" -d "Écosystèmes cherchés"
