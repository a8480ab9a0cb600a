#!/usr/bin/env bash
# Runs the service's client against programs of others, and prints a table of what is promised and what was seen: nginx
# with TLS, the form parsers of PHP, werkzeug and Node's busboy, tinyproxy, and a server that answers byte by byte as
# told. Installs what is missing of them from Debian's archive and builds kvteditor_peers. All of them listen on loopback
# or in a temporary folder, and are stopped at the end; no service of the system is used. Takes some minutes, and ends
# with 1 if a check failed.
#   tests/peers/run.sh [--only NAMES] [BUILD-FOLDER]    BUILD-FOLDER: build/release by default
# NAMES, separated by commas: forms once redirects early interim alert tls proxy
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
usage() {
  sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}"
  exit "$1"
}
die() {
  printf 'peers: %s\n' "$1" >&2
  exit 2
}

only=forms,once,redirects,early,interim,alert,tls,proxy
while (($#)); do
  case $1 in
    -h | --help) usage 0 ;;
    --only) only=${2:?--only needs names} && shift 2 ;;
    -*) usage 2 >&2 ;;
    *) break ;;
  esac
done
(($# <= 1)) || usage 2 >&2
build=$(cd "${1:-$top/build/release}" 2>/dev/null && pwd) || die "there is no folder ${1:-build/release}"

"$top/scripts/setup.sh" run nginx-light php-cgi python3-werkzeug nodejs node-busboy tinyproxy curl openssl
cmake --build "$build" --target kvteditor_peers >&2
# Where Debian has them: PATH may find others, which do not know Debian's modules.
nginx=/usr/sbin/nginx python=/usr/bin/python3 node=/usr/bin/node

work=$(mktemp -d)
started=()
finish() {
  ((${#started[@]} == 0)) || kill "${started[@]}" 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap finish EXIT

# Runs a server in the background; what it says is shown if one does not come up.
start() {
  "${@:2}" </dev/null >"$work/$1.said" 2>&1 &
  started+=($!)
}
all_live() {
  local process
  for process in "${started[@]}"; do
    kill -0 "$process" 2>/dev/null || return 1
  done
}
# Tries a command until it succeeds, 30 s at most and only while all servers live.
wait_for() {
  local until=$((SECONDS + 30))
  until "${@:2}" >/dev/null 2>&1; do
    if ((SECONDS > until)) || ! all_live; then
      tail -n 20 "$work"/*.said "$work"/*.log >&2 || true
      die "$1 did not come up"
    fi
    sleep 0.1
  done
}

"$top/devservice/make-certificates.sh" "$work/certificates"
read -r main other plain proxy closed < <("$python" - <<'END'
import socket
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(5)]
print(*(each.getsockname()[1] for each in sockets))
END
)
mkdir "$work/files" "$work/temporary"
head -c 65536 /dev/urandom >"$work/files/file"

redirects() {
  local status
  for status in 301 302 303 307 308; do
    echo "    location = /here/$status { return $status /file; }"
    echo "    location = /there/$status { return $status https://127.0.0.1:$other/file; }"
  done
}
cat >"$work/nginx.conf" <<END
# The worker would otherwise be another user than root, who cannot read the folder.
user $(id -un) $(id -gn);
daemon off;
# One, so that its log is in order.
worker_processes 1;
pid $work/nginx.pid;
error_log $work/nginx-error.log;
events {}
http {
  client_body_temp_path $work/temporary/body;
  proxy_temp_path $work/temporary/proxy;
  fastcgi_temp_path $work/temporary/fastcgi;
  uwsgi_temp_path $work/temporary/uwsgi;
  scgi_temp_path $work/temporary/scgi;
  log_format short '\$request_method \$request_uri \$status';
  access_log $work/nginx-access.log short;
  client_max_body_size 64m;
  ssl_certificate $work/certificates/server.pem;
  ssl_certificate_key $work/certificates/server.key;
  root $work/files;
  server {
    listen 127.0.0.1:$main ssl;
    location = /php {
      fastcgi_pass unix:$work/php.sock;
      fastcgi_param SCRIPT_FILENAME $here/parser.php;
      fastcgi_param REQUEST_METHOD \$request_method;
      fastcgi_param CONTENT_TYPE \$content_type;
      fastcgi_param CONTENT_LENGTH \$content_length;
    }
    location = /werkzeug { proxy_pass http://unix:$work/werkzeug.sock:; }
    location = /busboy { proxy_pass http://unix:$work/busboy.sock:; }
$(redirects)
    location = /plain { return 302 http://127.0.0.1:$plain/file; }
    location = /loop { return 302 /loop; }
    location = /large/keep { client_max_body_size 1m; lingering_close on; return 200; }
    location = /large/drop { client_max_body_size 1m; lingering_close off; return 200; }
  }
  server { listen 127.0.0.1:$other ssl; }
  server { listen 127.0.0.1:$plain; }
}
END
cat >"$work/tinyproxy.conf" <<END
Listen 127.0.0.1
Port $proxy
Allow 127.0.0.1
MaxClients 20
Timeout 60
LogLevel Connect
LogFile "$work/proxy.log"
PidFile "$work/proxy.pid"
# It refuses to connect to any other.
ConnectPort $main
END

start nginx "$nginx" -e "$work/nginx-error.log" -c "$work/nginx.conf"
start php env PHP_FCGI_MAX_REQUESTS=0 php-cgi -n -b "$work/php.sock" -d "upload_tmp_dir=$work/temporary" \
  -d post_max_size=64M -d upload_max_filesize=64M
start werkzeug "$python" "$here/parser.py" "$work/werkzeug.sock"
start busboy env NODE_PATH=/usr/share/nodejs "$node" "$here/parser.js" "$work/busboy.sock"
start raw "$python" "$here/raw.py" "$work"
start tinyproxy tinyproxy -d -c "$work/tinyproxy.conf"
ask() { curl --fail --silent --noproxy '' --cacert "$work/certificates/ca.pem" "$@"; }
for parser in php werkzeug busboy; do
  wait_for "$parser" ask --form a=b "https://127.0.0.1:$main/$parser"
done
wait_for tinyproxy ask --proxy "http://127.0.0.1:$proxy" "https://127.0.0.1:$main/file"
wait_for "the raw server" test -s "$work/raw.ports"

version_of() { "$@" 2>&1 | grep -Eo '[0-9]+(\.[0-9]+)+' | head -1; }
printf 'nginx %s, PHP %s, werkzeug %s, Node %s with busboy %s, tinyproxy %s\n' "$(version_of "$nginx" -v)" \
  "$(version_of php-cgi -n -v)" \
  "$(version_of "$python" -c 'import importlib.metadata as m; print(m.version("werkzeug"))')" \
  "$(version_of "$node" --version)" "$(version_of dpkg-query --show node-busboy)" "$(version_of tinyproxy -v)"

arguments=("only=$only" "folder=$work" "nginx=https://127.0.0.1:$main/" "byName=https://localhost:$main/"
  "otherPort=https://127.0.0.1:$other/" "proxy=$proxy" "closed=$closed")
while read -r name port; do
  arguments+=("$name=https://127.0.0.1:$port/")
done <"$work/raw.ports"
# Only the check's proxy and the built-in configuration, whatever is set here.
env -u http_proxy -u https_proxy -u all_proxy -u no_proxy -u KVTEDITOR_SERVICE_CONFIG HOME="$work" \
  "$build/tests/peers/kvteditor_peers" "${arguments[@]}"
