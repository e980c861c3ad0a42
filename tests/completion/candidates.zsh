# candidates.zsh SHARE LINE: prints what zsh's completion, with SHARE's functions in fpath, offers
# at the end of the line, one candidate a line. An interactive zsh in a pseudo-terminal does it;
# compadd there notes what matches, but for the calls that only sort out candidates.
zmodload zsh/zpty
export ZDOTDIR=$(mktemp -d) scripts=$1/zsh/site-functions
cat >$ZDOTDIR/.zshrc <<'END'
fpath=($scripts $fpath)
autoload -Uz compinit && compinit -u -D
unsetopt beep list_beep always_last_prompt
LISTMAX=0
compadd() {
  local -a hits
  if [[ -z ${(M)@[1,(i)(-|--)]:#-[OAD]*} ]]; then
    builtin compadd -A hits "$@"
    print -rl -- $hits >>$ZDOTDIR/notes
  fi
  builtin compadd "$@"
}
finish() { zle complete-word; : >$ZDOTDIR/done; BUFFER=''; }
zle -C complete-word complete-word _main_complete
zle -N finish
bindkey '^T' finish
END
: >$ZDOTDIR/notes
zpty -b shell 'TERM=dumb zsh -d -i'
zpty -w -n shell "$2"$'\x14'
for ((wait = 0; wait < 1000; ++wait)); do [[ -e $ZDOTDIR/done ]] && break || sleep 0.01; done
zpty -d shell
cat $ZDOTDIR/notes
rm -r $ZDOTDIR
