<?php
// Answers how PHP read a form: its fields, then its files.
$parts = [];
foreach ($_POST as $name => $value)
    $parts[] = ["name" => (string)$name, "value" => base64_encode($value)];
foreach ($_FILES as $name => $file) {
    $value = $file["error"] === UPLOAD_ERR_OK ? file_get_contents($file["tmp_name"]) : "";
    $parts[] = ["name" => (string)$name, "fileName" => $file["full_path"], "value" => base64_encode($value)];
}
header("Content-Type: application/json");
echo json_encode(["parts" => $parts], JSON_INVALID_UTF8_SUBSTITUTE);
