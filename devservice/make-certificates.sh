#!/bin/sh
# Makes a test authority, a good server certificate for the loopback addresses, and the bad ones that a client
# must refuse. The dates are fixed, so that a machine with a wrong clock still gets usable ones.
# usage: make-certificates.sh FOLDER [OPENSSL]
set -eu

folder=$1
openssl=${2:-openssl}
good_from=20200101000000Z
good_until=20991231235959Z

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"

cat > ca.cnf <<'END'
[ca]
default_ca = test
[test]
database = index.txt
new_certs_dir = .
rand_serial = yes
default_md = sha256
policy = any
unique_subject = no
copy_extensions = none
[any]
commonName = supplied
[req]
distinguished_name = name
prompt = no
[name]
commonName = unused
[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[loopback]
basicConstraints = critical, CA:FALSE
extendedKeyUsage = serverAuth
subjectAltName = IP:127.0.0.1, DNS:localhost
[elsewhere]
basicConstraints = critical, CA:FALSE
extendedKeyUsage = serverAuth
subjectAltName = DNS:elsewhere.example
END
: > index.txt

# request NAME SUBJECT
request() {
    "$openssl" req -config ca.cnf -new -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes \
        -keyout "$1.key" -out "$1.csr" -subj "/CN=$2" 2>> openssl.log
}

# sign NAME EXTENSIONS FROM UNTIL SIGNER-OPTION...
sign() {
    name=$1
    extensions=$2
    from=$3
    until=$4
    shift 4
    "$openssl" ca -config ca.cnf -batch -notext -in "$name.csr" -out "$name.pem" -extensions "$extensions" \
        -startdate "$from" -enddate "$until" "$@" 2>> openssl.log
}

request ca "Editor test authority"
sign ca authority $good_from $good_until -selfsign -keyfile ca.key
request other-ca "Another authority"
sign other-ca authority $good_from $good_until -selfsign -keyfile other-ca.key

request server 127.0.0.1
sign server loopback $good_from $good_until -cert ca.pem -keyfile ca.key
request other-host elsewhere.example
sign other-host elsewhere $good_from $good_until -cert ca.pem -keyfile ca.key
request expired 127.0.0.1
sign expired loopback 20200101000000Z 20200201000000Z -cert ca.pem -keyfile ca.key
request unknown-ca 127.0.0.1
sign unknown-ca loopback $good_from $good_until -cert other-ca.pem -keyfile other-ca.key
request self-signed 127.0.0.1
sign self-signed loopback $good_from $good_until -selfsign -keyfile self-signed.key

# The authorities have signed all that they will.
rm -f ca.key other-ca.key ./*.csr ca.cnf index.txt* serial* ./??????????????????????????????????????*.pem
: > made
