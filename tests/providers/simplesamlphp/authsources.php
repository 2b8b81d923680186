<?php
$config = [
    'users' => ['exampleauth:UserPass', 'ada:Correct-Horse-7' => ['uid' => ['ada'], 'mail' => ['ada@example.test']]],
];
