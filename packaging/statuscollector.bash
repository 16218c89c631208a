# bash completion for statuscollector. tests/packaging/manual compares it with what --help prints.

_statuscollector() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local commands='diff init schema show'
  local command=${COMP_WORDS[1]} words=''
  COMPREPLY=()

  if [ "$COMP_CWORD" -eq 1 ]; then
    words="$commands --help --version"
  else
    case "$command $before" in
      'show -f' | 'show --format') words='json text xml' ;;
      'show -c' | 'show --cycles') return ;;
      'show -o' | 'show --output')
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return ;;
      'show '*) words='--cycles --format --help --output' ;;
      'diff '*)
        words='--help'
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
      'init '* | 'schema '*) words='--help' ;;
    esac
  fi
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _statuscollector statuscollector
