# bash completion for statuscollector. tests/packaging/manual compares it with what --help prints.

_statuscollector() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local commands='check diff explain help init schema show watch'
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
      'show --color') words='always auto never' ;;
      'show --with') words='insight' ;;
      'show --section')
        words='dcio dimming display fans findings identity inputs network output points resources
               sensors sources time ttable' ;;
      'show '*)
        words='--brief --color --cycles --format --help --no-pager --output --section --with' ;;
      'check -w' | 'check --warning' | 'check -c' | 'check --critical')
        compopt -o nospace 2>/dev/null
        words='database-age= device-errors= link-errors= link-transitions= memory-free= storage-free=
          sync-losses= temperature=' ;;
      'check -i' | 'check --ignore' | 'check -t' | 'check --timeout') return ;;
      'check '*) words='--critical --help --ignore --timeout --warning' ;;
      'explain -f' | 'explain --format') words='json text' ;;
      'explain '*) words='--format --help --problems' ;;
      'watch -i' | 'watch --interval' | 'watch -n' | 'watch --count') return ;;
      'watch '*) words='--changes --count --help --interval' ;;
      'diff '*)
        words='--help'
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
      'init --mode' | 'init --group') return ;;
      'init '*) words='--group --help --mode' ;;
      'help '*) words="$commands --help" ;;
      'schema '*) words='--help' ;;
    esac
  fi
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _statuscollector statuscollector
