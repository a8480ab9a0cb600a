"""Answers how werkzeug read a form: its fields, then its files. The argument is the socket to listen on."""

import base64
import json
import sys

from werkzeug.serving import run_simple
from werkzeug.wrappers import Request, Response


@Request.application
def application(request):
    parts = [
        {"name": name, "value": base64.b64encode(value.encode()).decode()}
        for name, value in request.form.items(multi=True)
    ]
    parts += [
        {"name": name, "fileName": file.filename, "value": base64.b64encode(file.read()).decode()}
        for name, file in request.files.items(multi=True)
    ]
    return Response(json.dumps({"parts": parts}), mimetype="application/json")


run_simple("unix://" + sys.argv[1], 0, application)
