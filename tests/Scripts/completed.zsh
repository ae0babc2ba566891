#!/usr/bin/zsh -f
# What zsh offers for each line of its input, one a line, and an empty line after that: completed.zsh COMPLETION-SCRIPT
zmodload zsh/zpty
scratch=$(mktemp -d)
cp $1 $scratch/_tallyroom-cli
cat >$scratch/setup <<SETUP
PS1= fpath=($scratch \$fpath)
autoload -Uz compinit && compinit -u -d $scratch/dump
compadd() {
    # Calls that only fill arrays offer nothing.
    [[ "\${@[1,(i)-]}" == *-[OAD]\ * ]] || {
        local -a offered
        builtin compadd -O offered "\$@"
        print -rl -- \$offered >>$scratch/offered
    }
    builtin compadd "\$@"
}
unsetopt beep auto_list auto_menu
tell() { : >$scratch/done }
zle -N tell
bindkey '^I' complete-word '^T' tell '^U' kill-whole-line
: >$scratch/ready
SETUP
await() {
    local -i tries=0
    until [[ -e $scratch/$1 ]] || (( ++tries > 3000 )) { zpty -r -t line >/dev/null 2>&1; sleep 0.01 }
    [[ -e $scratch/$1 ]] || { print -u2 "zsh is not $1."; exit 1 }
    rm $scratch/$1
}
{
    zpty -b line zsh -f -i
    zpty -w line "source $scratch/setup"
    await ready
    while IFS= read -r typed; do
        : >$scratch/offered
        zpty -w -n line "$typed"$'\t\C-t\C-u'
        await done
        grep . $scratch/offered | sort -u
        print
    done
} always {
    zpty -d line
    rm -rf $scratch
}
