# Sourced by tools/test_brokers: nodes of RabbitMQ, each a process with everything in a folder, beside
# whatever runs on this machine.

# start_names FOLDER PORT: by which Erlang's nodes find each other
start_names() {
    nodes_folder=$1
    export ERL_EPMD_PORT=$2 HOME=$1
    epmd -port "$2" >/dev/null 2>&1 &
    epmd_pid=$!
}

# start_node NAME MQTT_PORT AMQP_PORT DISTRIBUTION_PORT [NODE]…: of a cluster with these nodes. Sets
# node_pid.
start_node() {
    local name=$1 mqtt=$2 amqp=$3 distribution=$4 folder=$nodes_folder/$1 i=0 node
    shift 4
    mkdir -p "$folder"
    echo '[rabbitmq_mqtt].' >"$folder/plugins"
    {
        echo "listeners.tcp.1 = 127.0.0.1:$amqp"
        echo "mqtt.listeners.tcp.1 = 127.0.0.1:$mqtt"
        echo "mqtt.allow_anonymous = true"
        # Without it the dot of spBv1.0 becomes a slash.
        echo "mqtt.sparkplug = true"
        [ $# -eq 0 ] || echo "cluster_formation.peer_discovery_backend = classic_config"
        for node in "$@"; do
            echo "cluster_formation.classic_config.nodes.$((++i)) = $node@localhost"
        done
    } >"$folder/rabbitmq.conf"
    RABBITMQ_NODENAME=$name@localhost RABBITMQ_CONFIG_FILE=$folder/rabbitmq.conf \
        RABBITMQ_MNESIA_BASE=$folder RABBITMQ_LOG_BASE=$folder RABBITMQ_DIST_PORT=$distribution \
        RABBITMQ_ENABLED_PLUGINS_FILE=$folder/plugins RABBITMQ_PID_FILE=$folder/pid \
        /usr/lib/rabbitmq/bin/rabbitmq-server >"$folder/output" 2>&1 &
    node_pid=$!
}

# await_port PORT: until someone listens
await_port() {
    local i
    for ((i = 0; i < 600; ++i)); do
        (: >"/dev/tcp/127.0.0.1/$1") 2>/dev/null && return
        sleep 0.2
    done
    echo "Nobody listens on port $1" >&2
    return 1
}
